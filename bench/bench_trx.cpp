// TRX throughput: builds a model of many processes in core data (as a load
// would), writes it, and reads the text back; prints sizes, times and memory.
//   bench_trx [processes=500] [activities per process=20] [runs=3]
// Write and read run `runs` times each (reads into fresh core data); the
// best run counts, since the other sessions of a shared machine only ever
// make a run slower. See bench/README.md.
#include "dvnfffdn.h"

#include <sys/resource.h>
#include <time.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {
// "P12", "A3": a letter and a number.
DvnfString Label(const char* prefix, int n) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%s%d", prefix, n);
    return DvnfString(buf);
}

// Wall-clock time and the processor time of this process, in seconds.
struct Clock {
    std::chrono::steady_clock::time_point wall = std::chrono::steady_clock::now();
    double cpu = Cpu();
    static double Cpu() {
        timespec t{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return t.tv_sec + t.tv_nsec / 1e9;
    }
    double Wall() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count(); }
    double Processor() const { return Cpu() - cpu; }
};

// The best (shortest) of the runs, by wall clock and by processor time.
struct Best {
    double wall = 1e30, cpu = 1e30;
    void Take(const Clock& c) {
        double w = c.Wall(), p = c.Processor();
        if (w < wall) wall = w;
        if (p < cpu) cpu = p;
    }
};

// Peak resident memory of the process so far, in MB.
double PeakMB() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss / 1024.0;  // kilobytes on Linux
}
}  // namespace

int main(int argc, char** argv) {
    int processes = argc > 1 ? std::atoi(argv[1]) : 500;
    int activities = argc > 2 ? std::atoi(argv[2]) : 20;
    int runs = argc > 3 ? std::atoi(argv[3]) : 3;
    if (runs < 1) runs = 1;
    DvnfCollectingMessageHandler quiet;
    DvnfTRXData data(DvnfTRXTypes::_instance, &quiet);

    double base = PeakMB();
    Clock t0;
    for (int p = 0; p < processes; ++p) {
        DvnfEntity& proc = data.CreateEntity(DvnfString("Process"), DvnfString(), Label("P", p));
        DvnfAttributeData a = proc.AttributeData();
        a("Description") = Label("Process number ", p);
        a("NotifyDuration")("Hours") = 4;
        DvnfAttributeData d = a("Diagram");
        for (int i = 0; i < activities; ++i) {
            DvnfEntity& act = data.CreateProgramActivityByOID(d, DvnfString());
            act.Name(Label("A", i));
            act.AttributeData()("Layout")("Xpos") = i * 10;
            act.AttributeData()("Start")("Condition") = "AND";
            data.AddLinkByName(act.AttributeData()("Implementation")("AsProgram").AsEntity(), DvnfString("ReferencesProgram"),
                               DvnfString("Program"), Label("PRG", i), true, true);
            if (i > 0)
                data.CreateControlConnector(d, Label("A", i - 1), Label("A", i),
                                            nullptr);
        }
        data.AddLinkByName(proc, DvnfString("ProcessHasCategory"), DvnfString("Category"), DvnfString("Sales"), true, true);
    }
    double build = t0.Wall();
    double afterBuild = PeakMB();

    std::string text;
    Best write;
    for (int r = 0; r < runs; ++r) {
        Clock t;
        text = DvnTRXWriter(data).Write();
        write.Take(t);
    }
    double afterWrite = PeakMB();

    Best read;
    int rc = 0;
    for (int r = 0; r < runs; ++r) {
        DvnfTRXData back(DvnfTRXTypes::_instance, &quiet);
        Clock t;
        rc = DvnTRXFrontend(back, nullptr).ReadText(text, "bench.trx");
        read.Take(t);
        if (rc != DvnTRXGood) break;
    }
    double afterRead = PeakMB();

    double mb = text.size() / 1e6;
    std::printf("processes %d, activities %d, entities %ld, text %.1f MB, best of %d runs\n", processes,
                processes * activities, data.NumberOfEntities(), mb, runs);
    std::printf("build %.3f s, write %.3f s (%.1f MB/s), read %.3f s (%.1f MB/s), result %d\n", build, write.wall,
                mb / write.wall, read.wall, mb / read.wall, rc);
    // Processor time leaves out the waits a loaded machine imposes.
    std::printf("processor time: write %.3f s (%.1f MB/s), read %.3f s (%.1f MB/s)\n", write.cpu, mb / write.cpu,
                read.cpu, mb / read.cpu);
    // Peak resident memory: the model as built, the text beside it, and what
    // a read adds on top (the model read back and the parser's own memory).
    std::printf("peak memory: model %.1f MB, + text %.1f MB, + read %.1f MB (%.1fx the text)\n", afterBuild - base,
                afterWrite - afterBuild, afterRead - afterWrite, (afterRead - afterWrite) / mb);
    return rc == DvnTRXGood ? 0 : 1;
}
