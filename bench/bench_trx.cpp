// TRX throughput: builds a model of many processes in core data (as a load
// would), writes it, and reads the text back; prints sizes and times.
//   bench_trx [processes=500] [activities per process=20]
#include "dvnfffdn.h"

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

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}
}  // namespace

int main(int argc, char** argv) {
    int processes = argc > 1 ? std::atoi(argv[1]) : 500;
    int activities = argc > 2 ? std::atoi(argv[2]) : 20;
    DvnfCollectingMessageHandler quiet;
    DvnfTRXData data(DvnfTRXTypes::_instance, &quiet);

    auto t0 = std::chrono::steady_clock::now();
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
    double build = Seconds(t0);

    t0 = std::chrono::steady_clock::now();
    std::string text = DvnTRXWriter(data).Write();
    double write = Seconds(t0);

    DvnfTRXData back(DvnfTRXTypes::_instance, &quiet);
    t0 = std::chrono::steady_clock::now();
    int rc = DvnTRXFrontend(back, nullptr).ReadText(text, "bench.trx");
    double read = Seconds(t0);

    std::printf("processes %d, activities %d, entities %ld, text %.1f MB\n", processes, processes * activities,
                data.NumberOfEntities(), text.size() / 1e6);
    std::printf("build %.3f s, write %.3f s (%.1f MB/s), read %.3f s (%.1f MB/s), result %d\n", build, write,
                text.size() / 1e6 / write, read, text.size() / 1e6 / read, rc);
    return rc == DvnTRXGood ? 0 : 1;
}
