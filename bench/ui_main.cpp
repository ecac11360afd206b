// The dialog benchmarks run offscreen, inside one QApplication.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdlib>

#include <QApplication>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // The heap is not given back between iterations: otherwise whether a freed 200,000-site book's
    // pages are returned (and faulted in again by the next load) depends on what else lies above them,
    // which made the same load differ by a factor of two from one benchmark to the next.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
