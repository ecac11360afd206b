// A 256 KiB image loaded into the simulated logger pacing its line at 115,200 baud, beside the bare
// transfer of the same bytes through the same pacing: the difference is the protocol's overhead.
#include <benchmark/benchmark.h>

#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "LinePacer.h"
#include "SimulatorProcess.h"
#include "TempDir.h"
#include <meridex/firmware/FirmwareImage.h>
#include <meridex/firmware/LinkLogger.h>
#include <meridex/platform/Links.h>

namespace {

constexpr std::uint32_t kBaud = 115200;
constexpr std::size_t kImage = 256 * 1024;

std::string Payload() {
    std::string bytes(kImage, '\0');
    for (std::size_t i = 0; i < kImage; ++i) bytes[i] = static_cast<char>((i * 131) >> 3);
    return bytes;
}

double BareSeconds() { return kImage * 10.0 / kBaud; }

// Baseline: the payload's bytes alone through the simulator's pacing, one reply byte at the end.
void BM_BareTransferAt115200(benchmark::State& state) {
    const std::string payload = Payload();
    for (auto _ : state) {
        int pair[2];
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, pair);
        std::thread receiver([fd = pair[1]] {
            meridex::LinePacer pacer(kBaud);
            std::size_t got = 0;
            char buffer[65536];
            while (got < kImage) {
                ssize_t n = ::read(fd, buffer, sizeof buffer);
                if (n <= 0) break;
                pacer.Pass(static_cast<std::size_t>(n));
                got += static_cast<std::size_t>(n);
            }
            ::write(fd, "k", 1);
        });
        for (std::size_t sent = 0; sent < payload.size();) {
            ssize_t n = ::write(pair[0], payload.data() + sent, payload.size() - sent);
            if (n <= 0) break;
            sent += static_cast<std::size_t>(n);
        }
        char k;
        ::read(pair[0], &k, 1);
        receiver.join();
        ::close(pair[0]);
        ::close(pair[1]);
    }
    state.counters["bare_s"] = BareSeconds();
}
BENCHMARK(BM_BareTransferAt115200)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// The whole upgrade over a pseudo-terminal: identify, loader, erase, 256 blocks of 1 KiB, verify, start, confirm.
void BM_UpgradeAt115200(benchmark::State& state) {
    meridex::test::TempDir dir;
    meridex::test::SimulatorProcess sim({"--flash", dir.File("flash.bin"), "--pty", "--baud", std::to_string(kBaud),
                                         "--block-size", "1024"});
    if (!sim.Ready()) {
        state.SkipWithError("the simulator did not start");
        return;
    }
    const meridex::FirmwareImage image = meridex::FirmwareImage::Make({"WL400"}, "2.0.0", "", Payload());
    double seconds = 0;
    for (auto _ : state) {
        std::string error;
        auto link = meridex::Platform::OpenSerialLink(sim.Where(), kBaud, "", error);
        meridex::LinkLogger::Options options;
        options.lineBaud = kBaud;
        meridex::LinkLogger logger(std::move(link), options);
        auto start = std::chrono::steady_clock::now();
        meridex::UpgradeResult r = logger.LoadFirmware(image, nullptr);
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!r.Ok()) state.SkipWithError(r.message.c_str());
    }
    state.counters["bare_s"] = BareSeconds();
    state.counters["x_bare"] = seconds / BareSeconds();
}
BENCHMARK(BM_UpgradeAt115200)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
