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
#include <sys/mman.h>
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

// A virtual machine may have to ask its host for a page that has not been in use lately, which takes longer than to
// copy it, and of which there are now many and now few. Whoever comes next gets so much that was in use just now.
void freshenMemory(std::size_t wanted) {
    const auto unused = static_cast<std::size_t>(sysconf(_SC_AVPHYS_PAGES) * sysconf(_SC_PAGESIZE));
    const std::size_t bytes = std::min(wanted, unused / 2);
    if (bytes == 0) return;
    void* const pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (pages != MAP_FAILED) munmap(pages, bytes);
}

struct Comparison {
    std::function<void()> prepare; // before each of them
    std::function<void()> ours;
    std::vector<std::function<void()>> peers;
    std::size_t memory = 0; // that each of them fills with files
};

// The medians of the rounds' ratios to each peer. Who goes first changes; what was there before is on the disk already.
std::vector<double> medianRatios(const Comparison& comparison, int rounds) {
    std::vector<std::function<void()>> runners{comparison.ours};
    runners.insert(runners.end(), comparison.peers.begin(), comparison.peers.end());
    std::vector<std::vector<double>> ratios(comparison.peers.size());
    for (int round = 0; round < rounds; ++round) {
        std::vector<double> times(runners.size());
        for (std::size_t turn = 0; turn < runners.size(); ++turn) {
            const std::size_t runner = (turn + static_cast<std::size_t>(round)) % runners.size();
            comparison.prepare();
            sync();
            freshenMemory(comparison.memory);
            times[runner] = seconds(runners[runner]);
        }
        for (std::size_t peer = 0; peer < ratios.size(); ++peer)
            ratios[peer].push_back(times[0] / times[peer + 1]);
    }
    std::vector<double> medians;
    for (std::vector<double>& of : ratios) {
        std::sort(of.begin(), of.end());
        medians.push_back(of[of.size() / 2]);
    }
    return medians;
}

double medianRatio(const Comparison& comparison, int rounds) { return medianRatios(comparison, rounds).front(); }

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
                             {[&] { run(mv + " && sync " + a + " " + b); }}};
    print("move of 20,000 files within a file system, durable : mv, sync", medianRatio(durable, rounds), "1.0", "0.5");
    print("the same, not yet durable : mv", medianRatio({back, move, {[&] { run(mv); }}}, rounds), "0.5", "0.1");
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
          medianRatio({[] {}, often("/folder"), {often("/file")}}, rounds), "1.2", "1.0");
    mustHold(service.files.makeMovesDurable());
}

std::string copying(const std::string& from, const std::string& to) {
    return "cp -a " + from + " " + to + " && sync -f " + to + " && rm -rf " + from;
}

// What has arrived stays until the end: some file systems are slow for minutes to make a file where one has just gone.
void compareMaildirs(const Scratch& scratch, Service& service, int files, int rounds) {
    constexpr std::size_t smallest = 4096;
    constexpr std::size_t largest = 40960;
    const std::string from = scratch.memory + "/item";
    int turn = 0;
    std::string to;
    const Comparison comparison{[&] {
                                    to = scratch.disk + "/item" + std::to_string(++turn);
                                    makeMaildir(from, files, smallest, largest);
                                },
                                [&] {
                                    mustHold(service.files.moveItem(from, to));
                                    mustHold(service.files.makeMovesDurable());
                                },
                                {[&] { run(copying(from, to)); }, [&] { run("mv " + from + " " + to); }},
                                static_cast<std::size_t>(files) * largest};
    const std::vector<double> ratios = medianRatios(comparison, rounds);
    const std::string what = "move of " + std::to_string(files) + " mails to another file system, durable : ";
    print(what + "cp, sync, rm", ratios[0], "0.90", "0.65");
    print(what + "mv", ratios[1], "1.15", "0.80");
}

void makeFile(const std::string& path, std::size_t size) {
    const std::string part(std::size_t{1} << 20, 'x');
    std::ofstream file{path};
    for (std::size_t written = 0; written < size; written += part.size())
        file.write(part.data(), static_cast<std::streamsize>(part.size()));
    if (!file.flush()) giveUp("no room for " + path);
}

void compareBigFile(const Scratch& scratch, Service& service, std::size_t size, int rounds) {
    const std::string from = scratch.memory + "/file";
    const std::string to = scratch.disk + "/file";
    const Comparison comparison{[&] {
                                    fs::remove(to);
                                    makeFile(from, size);
                                },
                                [&] {
                                    mustHold(service.files.moveItem(from, to));
                                    mustHold(service.files.makeMovesDurable());
                                },
                                {[&] { run(copying(from, to)); }},
                                size};
    print("move of one file of " + std::to_string(size >> 20) + " MB likewise : cp, sync, rm",
          medianRatio(comparison, rounds), "1.10", "1.0");
}

void compareRemoval(const Scratch& scratch, Service& service, int rounds) {
    const auto folder = [&](int turn) { return scratch.disk + "/removed" + std::to_string(turn); };
    for (int turn = 1; turn <= 2 * rounds; ++turn) // all before the first goes, for the same reason
        makeMaildir(folder(turn), 20000, 1000, 2000);
    int turn = 0;
    const auto ours = [&] { mustHold(service.files.removeItem(folder(turn))); };
    const auto peer = [&] { run("rm -rf " + folder(turn)); };
    const Comparison removal{[&] { ++turn; }, ours, {peer}};
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
    const long ours = peakMemory({"/proc/self/exe", "--move", from.c_str(), (to + "1").c_str()});
    makeMaildir(from, entries, 1, 1);
    const long peer = peakMemory({"mv", from.c_str(), (to + "2").c_str()});
    std::printf("peak memory: %ld KiB, mv %ld KiB\n", ours, peer);
    print("peak memory for " + std::to_string(entries) + " entries in one folder : mv",
          static_cast<double>(ours) / static_cast<double>(peer), "1.5", "1.0");
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
        callsPerFile(scratch, fs::read_symlink("/proc/self/exe").native() + " --move " + from + " " + to + "1", files);
    makeMaildir(from, files, 4096, 40960);
    std::printf("system calls for each file: mv %.1f\n", callsPerFile(scratch, "mv " + from + " " + to + "2", files));
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
    const int longRounds = isLong ? 5 : 3;           // of what takes seconds
    compareMemory(scratch, isLong ? 200000 : 50000); // while this program is still small
    compareWithin(scratch, service, rounds);
    compareMaildirs(scratch, service, isLong ? 20000 : 5000, longRounds);
    compareBigFile(scratch, service, isLong ? std::size_t{2} << 30 : std::size_t{256} << 20, 3);
    countCalls(scratch);
    compareRemoval(scratch, service, longRounds);
}
