// Scheme synchronisation against the tools a user would otherwise reach for:
// the scan against `find` listing both trees with their times, the copy
// against `cp --preserve=timestamps` of the same files, and a pull (what
// `meridex sync REMOTE LOCAL --pull` does) against `rsync -a --update --backup`
// followed by `sync -f`, which is as safe.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <meridex/sync/SyncSchemes.h>

#include "BenchFolder.h"

namespace {

namespace fs = std::filesystem;
using meridex::SyncSchemes;

constexpr int kFolders = 200;
constexpr int kFamiliesPerFolder = 25;  // four files each: 200 * 25 * 4 = 20,000 files a tree
constexpr int kCopyFamilies = 2000;     // three files each, 28 KiB a family
constexpr int kPullFamilies = 4000;     // a fifth newer on each side, three files each
constexpr int kPullFamiliesPerFolder = 100;
constexpr std::pair<const char*, std::size_t> kFamily[] = {{"SXS", 16384}, {"XML", 4096}, {"LDR", 8192}};

void WriteFile(const std::string& path, std::size_t size, std::time_t modified) {
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    struct timespec times[2] = {{modified, 0}, {modified, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

struct Fixture {
    std::string root;
    std::string scanRemote, scanLocal, copySource, copyTarget;
    std::uint64_t copyBytes = 0;

    Fixture() {
        std::string pattern = (fs::temp_directory_path() / "meridex-sync-bench-XXXXXX").string();
        root = mkdtemp(pattern.data());
        scanRemote = root + "/remote";
        scanLocal = root + "/local";
        copySource = root + "/source";
        copyTarget = root + "/target";
        const char* extensions[] = {"SXS", "XML", "LDR", "TMP"};
        for (const auto& side : {scanRemote, scanLocal}) {
            for (int f = 0; f < kFolders; ++f) {
                std::string folder = side + "/Region" + std::to_string(f % 10) + "/Site" + std::to_string(f);
                fs::create_directories(folder);
                for (int s = 0; s < kFamiliesPerFolder; ++s)
                    for (const char* ext : extensions)
                        // A third of the schemes differ in time between the sides.
                        WriteFile(folder + "/Scheme" + std::to_string(s) + "." + ext, 64,
                                  1700000000 + (side == scanLocal && s % 3 == 0 ? 60 : 0));
            }
        }
        for (int n = 0; n < kCopyFamilies; ++n) {
            std::string folder = copySource + "/Region" + std::to_string(n / 100);
            if (n % 100 == 0) fs::create_directories(folder);
            for (const auto& [ext, size] : kFamily) {
                WriteFile(folder + "/Scheme" + std::to_string(n) + "." + ext, size, 1700000000 + n);
                copyBytes += size;
            }
        }
    }
    ~Fixture() {
        std::error_code ec;
        fs::remove_all(root, ec);
    }
};

Fixture& Trees() {
    static Fixture fixture;
    return fixture;
}

void BM_GetSchemeList(benchmark::State& state) {
    Fixture& f = Trees();
    for (auto _ : state) {
        SyncSchemes sync;
        sync.GetSchemeList(f.scanRemote, f.scanLocal);
        benchmark::DoNotOptimize(sync.SyncedFiles().Count() + sync.NewerLocalFiles().Count());
    }
    state.counters["files"] = 2.0 * kFolders * kFamiliesPerFolder * 4;
}

void BM_FindBaseline(benchmark::State& state) {
    Fixture& f = Trees();
    std::string command = "find '" + f.scanRemote + "' '" + f.scanLocal + "' -type f -printf '%T@ %p\\n'";
    std::string buffer(1 << 16, '\0');
    for (auto _ : state) {
        FILE* pipe = popen(command.c_str(), "r");
        std::size_t total = 0;
        while (std::size_t got = fread(buffer.data(), 1, buffer.size(), pipe)) total += got;
        pclose(pipe);
        benchmark::DoNotOptimize(total);
    }
}

void ClearTarget(const Fixture& f) {
    std::error_code ec;
    fs::remove_all(f.copyTarget, ec);
    sync();  // each run starts with nothing dirty, whoever ran before
}

// The target folder holds an older copy of every file (or nothing).
void PrepareTarget(const Fixture& f, bool withOlderCopies) {
    ClearTarget(f);
    if (!withOlderCopies) return;
    std::string command = "cp -r '" + f.copySource + "' '" + f.copyTarget + "' && find '" + f.copyTarget +
                          "' -type f -exec touch -d 2020-01-01 {} + && sync";
    if (std::system(command.c_str()) != 0) std::abort();
}

void RunSync(benchmark::State& state, bool withOlderCopies, std::shared_ptr<meridex::SchemeFileSystem> fileSystem) {
    Fixture& f = Trees();
    for (auto _ : state) {
        state.PauseTiming();
        PrepareTarget(f, withOlderCopies);
        state.ResumeTiming();
        SyncSchemes sync(fileSystem);
        sync.GetSchemeList(f.copyTarget, f.copySource);
        for (auto item : sync.NewerLocalFiles().Items()) item.setSyncOptions(meridex::syncUpdate);
        sync.Sync();
        if (sync.Errors().Count() != 0 || sync.NewerLocalFiles().Count() != kCopyFamilies)
            state.SkipWithError("copy failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.copyBytes));
}

void RunCp(benchmark::State& state, bool withOlderCopies, const std::string& after) {
    Fixture& f = Trees();
    // Into an existing folder cp needs "source/." to copy over what is there.
    std::string command = "cp -r --preserve=timestamps '" + f.copySource + (withOlderCopies ? "/." : "") + "' '" +
                          f.copyTarget + "'" + after;
    for (auto _ : state) {
        state.PauseTiming();
        PrepareTarget(f, withOlderCopies);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0) state.SkipWithError("cp failed");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * f.copyBytes));
}

// Two trees of the same schemes: a fifth newer remotely, a fifth newer
// locally, the rest in step. Each run pulls into a fresh copy of the local tree.
struct PullTrees {
    std::string root, remote, pristine, local;
    PullTrees() {
        root = BenchFolder() + "/pull";
        remote = root + "/remote";
        pristine = root + "/pristine";
        local = root + "/local";
        for (int n = 0; n < kPullFamilies; ++n) {
            const std::string folder = "/Region" + std::to_string(n / kPullFamiliesPerFolder);
            if (n % kPullFamiliesPerFolder == 0) {
                fs::create_directories(remote + folder);
                fs::create_directories(pristine + folder);
            }
            for (const auto& [ext, size] : kFamily) {
                const std::string name = folder + "/Scheme" + std::to_string(n) + "." + ext;
                const std::time_t time = 1700000000 + n;
                WriteFile(remote + name, size, time + (n % 5 == 0 ? 60 : 0));
                WriteFile(pristine + name, size, time + (n % 5 == 1 ? 60 : 0));
            }
        }
    }
    void Reset() const {
        std::error_code ec;
        fs::remove_all(local, ec);
        std::string command = "cp -a '" + pristine + "' '" + local + "' && sync -f '" + local + "'";
        if (std::system(command.c_str()) != 0) std::abort();
    }
};

// User and system time of this process and of the children it has waited for.
double CpuSeconds() {
    double total = 0;
    for (int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        struct rusage usage {};
        getrusage(who, &usage);
        for (const timeval& t : {usage.ru_utime, usage.ru_stime}) total += t.tv_sec + t.tv_usec / 1e6;
    }
    return total;
}

// Runs one timed pull per iteration on a fresh local tree; the counter
// "cpu_ms" is the CPU time of the pull and of any program it ran.
template <typename Run>
void TimePull(benchmark::State& state, const PullTrees& t, Run run) {
    double cpu = 0;
    for (auto _ : state) {
        state.PauseTiming();
        t.Reset();
        const double before = CpuSeconds();
        state.ResumeTiming();
        run();
        state.PauseTiming();
        cpu += CpuSeconds() - before;
        state.ResumeTiming();
    }
    state.counters["cpu_ms"] = benchmark::Counter(cpu * 1000, benchmark::Counter::kAvgIterations);
}

const PullTrees& Pull() {
    static const PullTrees trees;
    return trees;
}

void BM_SyncSchemesPull(benchmark::State& state) {
    const PullTrees& t = Pull();
    TimePull(state, t, [&] {
        SyncSchemes sync;
        sync.GetSchemeList(t.remote, t.local);
        for (auto item : sync.NewerRemoteFiles().Items()) item.setSyncOptions(meridex::syncUpdate);
        sync.Sync();
        if (sync.Errors().Count() != 0 || sync.NewerRemoteFiles().Count() != kPullFamilies / 5)
            state.SkipWithError("pull failed");
    });
}

void BM_RsyncPullBaseline(benchmark::State& state) {
    if (std::system("command -v rsync >/dev/null 2>&1") != 0) {
        state.SkipWithError("rsync is not installed (scripts/bootstrap installs it): no baseline for the pull");
        return;
    }
    const PullTrees& t = Pull();
    const std::string command =
        "rsync -a --update --backup '" + t.remote + "/' '" + t.local + "/' && sync -f '" + t.local + "'";
    TimePull(state, t, [&] {
        if (std::system(command.c_str()) != 0) state.SkipWithError("rsync failed");
    });
}

void BM_SyncSchemesCopy(benchmark::State& state) { RunSync(state, false, nullptr); }

// The same, flushing nothing: what the flush to disk costs.
struct NoFlush : meridex::SchemeFileSystem {
    bool Flush(int) override { return true; }
    void FlushFolder(const std::string&) override {}
    bool FlushFileSystem(const std::string&) override { return true; }
};

void BM_SyncSchemesCopyWithoutFlush(benchmark::State& state) { RunSync(state, false, std::make_shared<NoFlush>()); }
void BM_CpBaseline(benchmark::State& state) { RunCp(state, false, ""); }
// cp followed by sync(1): as durable as the copy above.
void BM_CpThenSyncBaseline(benchmark::State& state) { RunCp(state, false, " && sync"); }

// Updating older copies: each replaced file is backed up and flushed on its own.
void BM_SyncSchemesReplace(benchmark::State& state) { RunSync(state, true, nullptr); }
void BM_CpReplaceBaseline(benchmark::State& state) { RunCp(state, true, ""); }
void BM_CpReplaceThenSyncBaseline(benchmark::State& state) { RunCp(state, true, " && sync"); }

}  // namespace

BENCHMARK(BM_GetSchemeList)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_FindBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_SyncSchemesCopy)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_SyncSchemesCopyWithoutFlush)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_CpBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_CpThenSyncBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_SyncSchemesReplace)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(BM_CpReplaceBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);
BENCHMARK(BM_CpReplaceThenSyncBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

// Wall time is what counts here (the flushes wait on the disk); cpu_ms gives
// the CPU time, rsync's child processes included.
BENCHMARK(BM_SyncSchemesPull)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(BM_RsyncPullBaseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

BENCHMARK_MAIN();
