// The settings store against bare libxml2 in the same run: start-up (load and
// complete 200 profiles), the host's per-command question, and the save.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <meridex/frame/XmlDocument.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>

#include "SettingsDocument.h"

using namespace meridex;
using meridex::bench::SettingsPath;
using meridex::bench::TempPath;

namespace {

// The frame's own parser options, so the baseline parses the same way.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NODICT | XML_PARSE_NOBLANKS | XML_PARSE_NOERROR |
                              XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_NOCDATA;

void BareParse(benchmark::State& state) {
    const std::string& path = SettingsPath();
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadFile(path.c_str(), nullptr, kParseOptions);
        benchmark::DoNotOptimize(doc);
        xmlFreeDoc(doc);
    }
}
BENCHMARK(BareParse)->Unit(benchmark::kMicrosecond);

// The frame's load alone: what LoadSettings adds beyond it is the move of
// PROFILES and the completion of the profiles.
void XmlDocumentLoad(benchmark::State& state) {
    const std::string& path = SettingsPath();
    for (auto _ : state) benchmark::DoNotOptimize(XmlDocument::Load(path));
}
BENCHMARK(XmlDocumentLoad)->Unit(benchmark::kMicrosecond);

void LoadSettings(benchmark::State& state) {
    const std::string& path = SettingsPath();
    for (auto _ : state) {
        Settings settings;
        benchmark::DoNotOptimize(settings.LoadSettings(path));
    }
}
BENCHMARK(LoadSettings)->Unit(benchmark::kMicrosecond);

// The bare walk the host's question amounts to: find the current profile's
// feature by key (ASCII case-insensitive) and read AVAILABLE.
xmlNodePtr Child(xmlNodePtr parent, const char* name) {
    for (xmlNodePtr c = parent ? parent->children : nullptr; c; c = c->next) {
        if (c->type == XML_ELEMENT_NODE && xmlStrEqual(c->name, BAD_CAST name)) return c;
    }
    return nullptr;
}

bool BareAvailable(xmlNodePtr profile, const char* key) {
    for (xmlNodePtr f = profile->children; f; f = f->next) {
        if (f->type != XML_ELEMENT_NODE || !xmlStrEqual(f->name, BAD_CAST "FEATURE")) continue;
        xmlNodePtr k = Child(f, "KEY");
        if (!k || !k->children || xmlStrcasecmp(k->children->content, BAD_CAST key) != 0) continue;
        xmlNodePtr a = Child(f, "AVAILABLE");
        return a && a->children && std::atof(reinterpret_cast<const char*>(a->children->content)) != 0;
    }
    return false;
}

void BareFeatureScan44(benchmark::State& state) {
    xmlDocPtr doc = xmlReadFile(SettingsPath().c_str(), nullptr, kParseOptions);
    xmlNodePtr profile = nullptr;
    for (xmlNodePtr p = Child(Child(xmlDocGetRootElement(doc), "PROFILES"), "PROFILE"); p; p = p->next) {
        xmlNodePtr k = Child(p, "KEY");
        if (k && k->children && xmlStrEqual(k->children->content, BAD_CAST "Crew 150")) profile = p;
    }
    std::vector<std::string> keys;
    for (const auto& entry : V4StandardProfiles::Catalogue()) keys.emplace_back(entry.key);
    for (auto _ : state) {
        int available = 0;
        for (const std::string& key : keys) available += BareAvailable(profile, key.c_str());
        benchmark::DoNotOptimize(available);
    }
    xmlFreeDoc(doc);
}
BENCHMARK(BareFeatureScan44);

void FeatureAvailable44(benchmark::State& state) {
    Settings settings;
    settings.LoadSettings(SettingsPath());
    const Profile current = settings.CurrentProfile();
    std::vector<std::string> keys;
    for (const auto& entry : V4StandardProfiles::Catalogue()) keys.emplace_back(entry.key);
    for (auto _ : state) {
        int available = 0;
        for (const std::string& key : keys) available += current.FeatureAvailable(key);
        benchmark::DoNotOptimize(available);
    }
}
BENCHMARK(FeatureAvailable44);

void BareSave(benchmark::State& state) {
    xmlDocPtr doc = xmlReadFile(SettingsPath().c_str(), nullptr, kParseOptions);
    const std::string out = TempPath("meridex-settings-bench-bare-out.xml");
    for (auto _ : state) benchmark::DoNotOptimize(xmlSaveFile(out.c_str(), doc));
    xmlFreeDoc(doc);
    std::filesystem::remove(out);
}
BENCHMARK(BareSave)->Unit(benchmark::kMicrosecond);

void SaveSettings(benchmark::State& state) {
    Settings settings;
    settings.LoadSettings(SettingsPath());
    const std::string out = TempPath("meridex-settings-bench-out.xml");
    for (auto _ : state) benchmark::DoNotOptimize(settings.SaveSettings(out));
    std::filesystem::remove(out);
}
BENCHMARK(SaveSettings)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
