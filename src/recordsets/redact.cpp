#include "redact.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Whether the key that ends just before `end` ends in `suffix` (upper case).
bool KeyEndsWith(const std::string& text, size_t end, const char* suffix) {
    const size_t n = std::char_traits<char>::length(suffix);
    if (end < n) return false;
    for (size_t i = 0; i < n; ++i)
        if (UpperAscii(text[end - n + i]) != suffix[i]) return false;
    return true;
}

// The value of a password attribute: where it stands in the text (braces
// included) and what it is (braces removed, "}}" read as "}").
struct Secret {
    size_t begin, end;
    std::string value;
};

std::vector<Secret> PasswordValues(const std::string& text) {
    std::vector<Secret> found;
    for (size_t eq = text.find('='); eq != std::string::npos; eq = text.find('=', eq + 1)) {
        size_t keyEnd = eq;
        while (keyEnd > 0 && IsBlank(text[keyEnd - 1])) --keyEnd;
        if (!KeyEndsWith(text, keyEnd, "PWD") && !KeyEndsWith(text, keyEnd, "PASSWORD")) continue;
        size_t begin = eq + 1;
        while (begin < text.size() && IsBlank(text[begin])) ++begin;
        Secret s{begin, begin, std::string()};
        if (begin < text.size() && text[begin] == '{') {
            size_t i = begin + 1;
            for (; i < text.size(); ++i) {
                if (text[i] != '}') {
                    s.value += text[i];
                } else if (i + 1 < text.size() && text[i + 1] == '}') {
                    s.value += '}';
                    ++i;
                } else {
                    break;
                }
            }
            s.end = std::min(i + 1, text.size());
        } else {
            s.end = std::min(text.find(';', begin), text.size());
            s.value = text.substr(begin, s.end - begin);
            while (!s.value.empty() && IsBlank(s.value.back())) s.value.pop_back();
        }
        if (s.value.empty()) continue;
        found.push_back(s);
        eq = s.end - 1;
    }
    return found;
}

void ReplaceAll(std::string& text, const std::string& secret) {
    for (size_t at = text.find(secret); at != std::string::npos;
         at = text.find(secret, at + std::char_traits<char>::length(kRedactedPassword)))
        text.replace(at, secret.size(), kRedactedPassword);
}

}  // namespace

CString RedactPassword(const CString& text, const CString& connect) {
    const std::string& in = text.str();
    std::vector<Secret> own = PasswordValues(in);
    std::string out;
    size_t from = 0;
    for (const Secret& s : own) {
        out += in.substr(from, s.begin - from);
        out += kRedactedPassword;
        from = s.end;
    }
    out += in.substr(std::min(from, in.size()));

    std::vector<std::string> values;
    for (const Secret& s : own) values.push_back(s.value);
    for (const Secret& s : PasswordValues(connect.str())) values.push_back(s.value);
    // Longer values first, so that one holding another is hidden whole.
    std::sort(values.begin(), values.end(),
              [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
    // A value of stars alone already reads as hidden.
    for (const std::string& value : values)
        if (value.find_first_not_of('*') != std::string::npos) ReplaceAll(out, value);
    return CString(out);
}

CString MaskedPassword(const CString& password) { return password.IsEmpty() ? CString() : CString(kRedactedPassword); }
