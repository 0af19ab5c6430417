// Moves and removals by the file manager against mv, cp, rm and sync, each doing the same to the same files.
//     files-benchmark --short|--long      prints the comparisons
//     files-benchmark --move FROM TO      moves once, to be watched from outside

#include "platform/linux/PosixFileManager.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace letterloft;
namespace fs = std::filesystem;

namespace {

class StandardError final : public Log {
public:
    void write(const std::string& message) override { std::fprintf(stderr, "%s\n", message.c_str()); }
};

class Silence final : public CopyProgress {
public:
    void began(const std::string&, std::uint64_t) override {}
    void progressed(std::uint64_t) override {}
    void ended() override {}
};

struct Service {
    StandardError log;
    FileSystemCalls calls;
    Silence progress;
    PosixFileManager files{{log, calls, progress}, "/nonexistent", {}};
};

[[noreturn]] void giveUp(const std::string& why) {
    std::fprintf(stderr, "files-benchmark: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

void mustHold(const Status& status) {
    if (!status) giveUp(status.sentence());
}

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) giveUp(command + " failed");
}

struct Scratch {
    Scratch() {
        const std::string beside = fs::read_symlink("/proc/self/exe").parent_path();
        for (auto [path, parent] : {std::pair{&memory, std::string{"/dev/shm"}}, std::pair{&disk, beside}}) {
            *path = parent + "/letterloft-benchmark-XXXXXX";
            if (mkdtemp(path->data()) == nullptr) giveUp("no folder in " + parent);
        }
        if (rename(memory.c_str(), (disk + "/x").c_str()) == 0) giveUp("/dev/shm is no file system of its own");
    }
    ~Scratch() { run("rm -rf '" + memory + "' '" + disk + "'"); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string memory;
    std::string disk;
};

void makeMaildir(const std::string& path, int files, int smallest, int largest) {
    fs::create_directories(path);
    const std::string text(static_cast<std::size_t>(largest), 'm');
    for (int i = 0; i < files; ++i)
        std::ofstream{path + "/" + std::to_string(1000000000 + i) + ".M" + std::to_string(i) + "P1.host:2,S"}.write(
            text.data(), smallest + (largest > smallest ? i * 7919 % (largest - smallest) : 0));
}

double seconds(const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void print(const std::string& what, double ratio, const char* must, const char* goal) {
    std::printf("%s\t%.2f\t%s\t%s\n", what.c_str(), ratio, must, goal);
    std::fflush(stdout);
}

struct Comparison {
    std::function<void()> prepare; // before each of the two
    std::function<void()> ours;
    std::function<void()> peer;
};

// The median of the rounds' ratios; who goes first alternates.
double medianRatio(const Comparison& comparison, int rounds) {
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        double ours = 0;
        double peer = 0;
        for (const bool first : {true, false}) {
            comparison.prepare();
            sync();
            if (first == (round % 2 == 0))
                ours = seconds(comparison.ours);
            else
                peer = seconds(comparison.peer);
        }
        ratios.push_back(ours / peer);
    }
    std::sort(ratios.begin(), ratios.end());
    return ratios[ratios.size() / 2];
}

void compareWithin(const Scratch& scratch, Service& service, int rounds) {
    const std::string a = scratch.disk + "/a";
    const std::string b = scratch.disk + "/b";
    fs::create_directories(a);
    fs::create_directories(b);
    makeMaildir(a + "/folder", 20000, 1, 1);
    std::ofstream{a + "/file"} << "1";
    const auto back = [&] {
        if (fs::exists(b + "/folder")) fs::rename(b + "/folder", a + "/folder");
    };
    const auto move = [&] { mustHold(service.files.moveItem(a + "/folder", b + "/folder")); };
    const std::string mv = "mv " + a + "/folder " + b + "/folder";
    const Comparison durable{back,
                             [&] {
                                 move();
                                 mustHold(service.files.makeMovesDurable());
                             },
                             [&] { run(mv + " && sync " + a + " " + b); }};
    print("move of 20,000 files within a file system, durable : mv, sync", medianRatio(durable, rounds), "1.0", "0.5");
    print("the same, not yet durable : mv", medianRatio({back, move, [&] { run(mv); }}, rounds), "0.5", "0.1");
    back();
    const auto often = [&](const std::string& name) {
        return [&service, a, b, name] {
            for (int i = 0; i < 200; ++i) {
                mustHold(service.files.moveItem(a + name, b + name));
                mustHold(service.files.moveItem(b + name, a + name));
            }
        };
    };
    print("move of 20,000 files within a file system : of 1 file",
          medianRatio({[] {}, often("/folder"), often("/file")}, rounds), "1.2", "1.0");
    mustHold(service.files.makeMovesDurable());
}

void compareAcross(const Scratch& scratch, Service& service, int files, std::uint64_t bigFile, int rounds) {
    const std::string from = scratch.memory + "/item";
    const std::string to = scratch.disk + "/item";
    const auto fresh = [&] {
        fs::remove_all(from);
        fs::remove_all(to);
        makeMaildir(from, files, 4096, 40960);
    };
    const auto move = [&] {
        mustHold(service.files.moveItem(from, to));
        mustHold(service.files.makeMovesDurable());
    };
    const std::string what = "move of " + std::to_string(files) + " mails to another file system, durable : ";
    const std::string cp = "cp -a " + from + " " + to + " && sync -f " + to + " && rm -rf " + from;
    print(what + "cp, sync, rm", medianRatio({fresh, move, [&] { run(cp); }}, rounds), "0.90", "0.65");
    print(what + "mv", medianRatio({fresh, move, [&] { run("mv " + from + " " + to); }}, rounds), "1.15", "0.80");
    const auto freshFile = [&] {
        fs::remove_all(from);
        fs::remove_all(to);
        run("head -c " + std::to_string(bigFile) + " /dev/zero | tr '\\0' x > " + from);
    };
    print("move of one file of " + std::to_string(bigFile >> 20) + " MB likewise : cp, sync, rm",
          medianRatio({freshFile, move, [&] { run(cp); }}, rounds), "1.10", "1.0");
}

void compareRemoval(const Scratch& scratch, Service& service, int rounds) {
    const std::string folder = scratch.disk + "/removed";
    const Comparison removal{[&] { makeMaildir(folder, 20000, 1000, 2000); },
                             [&] { mustHold(service.files.removeItem(folder)); }, [&] { run("rm -rf " + folder); }};
    print("removal of 20,000 files : rm -rf", medianRatio(removal, rounds), "1.10", "0.80");
}

// What a program took at its peak, in KiB; at least what this one takes, since execve(2) keeps the peak.
long peakMemory(std::vector<const char*> command) {
    command.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        execvp(command[0], const_cast<char* const*>(command.data())); // NOLINT: exec(3) changes nothing
        _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    if (wait4(child, &status, 0, &usage) != child || status != 0) giveUp(std::string{command[0]} + " failed");
    return usage.ru_maxrss;
}

void compareMemory(const Scratch& scratch, int entries) {
    const std::string from = scratch.memory + "/many";
    const std::string to = scratch.disk + "/many";
    makeMaildir(from, entries, 1, 1);
    const long ours = peakMemory({"/proc/self/exe", "--move", from.c_str(), to.c_str()});
    fs::remove_all(to);
    makeMaildir(from, entries, 1, 1);
    const long peer = peakMemory({"mv", from.c_str(), to.c_str()});
    std::printf("peak memory: %ld KiB, mv %ld KiB\n", ours, peer);
    print("peak memory for " + std::to_string(entries) + " entries in one folder : mv",
          static_cast<double>(ours) / static_cast<double>(peer), "1.5", "1.0");
    fs::remove_all(to);
}

// How many system calls the command makes for each of so many files.
double callsPerFile(const Scratch& scratch, const std::string& command, int files) {
    const std::string table = scratch.disk + "/calls";
    run("strace -f -c -S calls -U calls -o " + table + " " + command);
    std::ifstream lines{table};
    double sum = 0;
    for (std::string line; std::getline(lines, line);)
        sum = std::strtod(line.c_str(), nullptr); // the last one is the total
    return sum / files;
}

void countCalls(const Scratch& scratch) {
    constexpr int files = 5000;
    const std::string from = scratch.memory + "/counted";
    const std::string to = scratch.disk + "/counted";
    makeMaildir(from, files, 4096, 40960);
    const double ours =
        callsPerFile(scratch, fs::read_symlink("/proc/self/exe").native() + " --move " + from + " " + to, files);
    fs::remove_all(to);
    makeMaildir(from, files, 4096, 40960);
    std::printf("system calls for each file: mv %.1f\n", callsPerFile(scratch, "mv " + from + " " + to, files));
    print("system calls for each small file that changes its file system", ours, "16", "14");
}

} // namespace

int main(int count, char** arguments) {
    Service service;
    if (count == 4 && std::strcmp(arguments[1], "--move") == 0) {
        mustHold(service.files.moveItem(arguments[2], arguments[3]));
        return EXIT_SUCCESS;
    }
    const bool isLong = count == 2 && std::strcmp(arguments[1], "--long") == 0;
    const Scratch scratch;
    const int rounds = isLong ? 9 : 3;
    compareMemory(scratch, isLong ? 200000 : 50000); // while this program is still small
    compareWithin(scratch, service, rounds);
    compareAcross(scratch, service, isLong ? 20000 : 5000, isLong ? 2ull << 30 : 256ull << 20, rounds);
    compareRemoval(scratch, service, rounds);
    countCalls(scratch);
}
