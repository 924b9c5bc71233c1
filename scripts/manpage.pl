#!/usr/bin/env perl
# Makes the manual page dvnbt(1) from docs/cli.md, the one text of the
# command line, at build time:
#   perl scripts/manpage.pl docs/cli.md VERSION OUTPUT
# The title line becomes NAME, the first indented block SYNOPSIS, the text
# before the first "##" DESCRIPTION, each "##" a section. Tables become tagged
# paragraphs (first cell as the tag), "- " lines bullets, indented blocks
# literal displays; `code` is set in bold, links keep their text.
use strict;
use warnings;

my ($in, $version, $out) = @ARGV;
die "usage: manpage.pl CLI.md VERSION OUTPUT\n" unless defined $out;
open(my $fh, '<:encoding(UTF-8)', $in) or die "manpage.pl: $in: $!\n";
my @lines = <$fh>;
close $fh;
chomp @lines;
s/\r$// for @lines;

# Text for roff: backslashes escaped, inline markup turned into fonts.
sub inline {
    my ($text) = @_;
    my @parts = split /(`[^`]*`)/, $text;
    my $r = '';
    for my $p (@parts) {
        if ($p =~ /^`(.*)`$/) {
            my $code = $1;
            $code =~ s/\\\|/|/g;
            $code =~ s/\\/\\e/g;
            $code =~ s/-/\\-/g;
            $r .= "\\fB$code\\fR";
        } else {
            $p =~ s/\\\|/|/g;
            $p =~ s/\\/\\e/g;
            $p =~ s/\[([^\]]+)\]\([^)]+\)/$1/g;
            $p =~ s/\*\*([^*]+)\*\*/\\fB$1\\fR/g;
            $p =~ s/(?<![\w*])\*([^*\s][^*]*)\*(?![\w*])/\\fI$1\\fR/g;
            $p =~ s/(^|\s)--(\w)/$1\\-\\-$2/g;
            $r .= $p;
        }
    }
    return $r;
}

# A line of roff text must not start with a control character.
sub textline {
    my ($t) = @_;
    $t =~ s/^\s+//;
    return $t =~ /^[.']/ ? "\\&$t" : $t;
}

sub literal {
    my ($t) = @_;
    $t =~ s/\\/\\e/g;
    $t =~ s/-/\\-/g;
    return $t =~ /^[.']/ ? "\\&$t" : $t;
}

sub cells {
    my ($row) = @_;
    $row =~ s/^\s*\|//;
    $row =~ s/\|\s*$//;
    my @c = split /(?<!\\)\|/, $row;
    s/^\s+|\s+$//g for @c;
    return @c;
}

my $title = '';
my @roff;
my @para;
my $section = '';
my $synopsis_done = 0;
my $description_open = 0;

sub flush_para {
    return unless @para;
    push @roff, '.PP', map { textline(inline($_)) } @para;
    @para = ();
}

my $i = 0;
while ($i < @lines) {
    my $l = $lines[$i];
    if ($l =~ /^# (.*)/) {
        $title = $1;
        $i++;
        next;
    }
    if ($l =~ /^##+ (.*)/) {
        flush_para();
        my $h = uc $1;
        $h =~ s/`//g;
        push @roff, ".SH \"$h\"";
        $section = $h;
        $i++;
        next;
    }
    if ($l =~ /^    \S/) {
        flush_para();
        my @block;
        while ($i < @lines && ($lines[$i] =~ /^    / || ($lines[$i] =~ /^\s*$/ && $i + 1 < @lines && $lines[$i + 1] =~ /^    /))) {
            (my $b = $lines[$i]) =~ s/^    //;
            push @block, $b;
            $i++;
        }
        if (!$synopsis_done && $section eq '') {
            push @roff, '.SH SYNOPSIS', '.nf', (map { literal($_) } @block), '.fi';
            $synopsis_done = 1;
        } else {
            push @roff, '.PP', '.RS 4', '.nf', (map { literal($_) } @block), '.fi', '.RE';
        }
        next;
    }
    if ($section eq '' && $synopsis_done && !$description_open && $l =~ /\S/) {
        push @roff, '.SH DESCRIPTION';
        $description_open = 1;
    }
    if ($l =~ /^\s*\|/) {
        flush_para();
        my @rows;
        while ($i < @lines && $lines[$i] =~ /^\s*\|/) {
            push @rows, $lines[$i];
            $i++;
        }
        shift @rows;                                   # the header row
        shift @rows if @rows && $rows[0] =~ /^[\s|:-]+$/;  # the rule below it
        for my $row (@rows) {
            my @c = cells($row);
            my $tag = shift @c;
            push @roff, '.TP', textline(inline($tag)), textline(inline(join(' ', @c)));
        }
        next;
    }
    if ($l =~ /^- (.*)/) {
        flush_para();
        my @item = ($1);
        $i++;
        while ($i < @lines && $lines[$i] =~ /^  +\S/ && $lines[$i] !~ /^    /) {
            push @item, $lines[$i];
            $i++;
        }
        push @roff, '.IP \(bu 2', map { textline(inline($_)) } @item;
        next;
    }
    if ($l =~ /^\s*$/) {
        flush_para();
        $i++;
        next;
    }
    push @para, $l;
    $i++;
}
flush_para();

open(my $o, '>:encoding(UTF-8)', $out) or die "manpage.pl: $out: $!\n";
print $o ".\\\" Made from docs/cli.md by scripts/manpage.pl; edit docs/cli.md.\n";
print $o ".TH DVNBT 1 \"\" \"dvnbdbbe $version\" \"User Commands\"\n";
print $o ".SH NAME\n";
print $o "dvnbt \\- the command line of the dvnbdbbe database back end\n";
print $o "$_\n" for @roff;
print $o ".SH \"SEE ALSO\"\n";
print $o "\\fBodbcinst\\fR(1), \\fBisql\\fR(1), \\fBsqlite3\\fR(1); the schema scripts and examples in share/dvnbdbbe of the installation (/usr/share/dvnbdbbe from the package)\n";
close $o or die "manpage.pl: $out: $!\n";
