// The profile editor on the 200-profile settings document, beside LoadSettings alone in the same
// run: opening (load, build the editor, fill its lists) and one switch between profiles.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

#include <QApplication>
#include <QTreeWidget>

#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/settings/Settings.h>
#include <meridex/ui/settings/frmProfiles.h>

#include "SettingsDocument.h"

using namespace meridex;
using meridex::bench::SettingsPath;

namespace {

void LoadSettings(benchmark::State& state) {
    for (auto _ : state) {
        Settings settings;
        benchmark::DoNotOptimize(settings.LoadSettings(SettingsPath()));
    }
}
BENCHMARK(LoadSettings)->Unit(benchmark::kMillisecond);

// What ShowProfileEditor does before the person sees the window.
void OpenProfileEditor(benchmark::State& state) {
    const auto ui = std::make_shared<RecordingUserInterface>();
    for (auto _ : state) {
        Settings settings;
        settings.LoadSettings(SettingsPath());
        ui::frmProfiles form(ui);
        form.setV4Settings(&settings);
        benchmark::DoNotOptimize(form.findChild<QTreeWidget*>("lvFeatures")->topLevelItemCount());
    }
}
BENCHMARK(OpenProfileEditor)->Unit(benchmark::kMillisecond);

// A click on another row: its 44 features listed.
void SwitchProfile(benchmark::State& state) {
    Settings settings;
    settings.LoadSettings(SettingsPath());
    ui::frmProfiles form(std::make_shared<RecordingUserInterface>());
    form.setV4Settings(&settings);
    auto* profiles = form.findChild<QTreeWidget*>("lvProfiles");
    auto* features = form.findChild<QTreeWidget*>("lvFeatures");
    int row = 0;
    for (auto _ : state) {
        row = (row + 37) % profiles->topLevelItemCount();
        profiles->setCurrentItem(profiles->topLevelItem(row));
        benchmark::DoNotOptimize(features->topLevelItemCount());
    }
}
BENCHMARK(SwitchProfile)->Unit(benchmark::kMicrosecond);

}  // namespace
