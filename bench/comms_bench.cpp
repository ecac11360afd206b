// The communications map's two scans against baselines measured in the same
// run: CleanRS232Direct over this machine's real ports (bound 256) against a
// plain stat of 256 device paths, and mapping a 100-profile scheme onto a
// 100-profile map against bare libxml2 parses of the same texts.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/XmlDocument.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/platform/linux/LinuxSerialPortSource.h>

using namespace meridex;

namespace {

// A store in a temporary folder, never the user's own.
struct BenchStore {
    BenchStore() {
        std::string pattern = (std::filesystem::temp_directory_path() / "meridex-bench-XXXXXX").string();
        folder = mkdtemp(pattern.data()) ? pattern : std::string();
        store = std::make_shared<IniUserStore>(folder + "/meridex");
        store->SaveSetting("MeridexV4", "Settings", "MAX_COMM_PORT_SCOMM", "256");
    }
    ~BenchStore() {
        std::error_code ec;
        if (!folder.empty()) std::filesystem::remove_all(folder, ec);
    }
    std::string folder;
    std::shared_ptr<IniUserStore> store;
};

void StatDevicePaths(benchmark::State& state) {
    std::vector<std::string> paths;
    for (int k = 0; k < 256; ++k) paths.push_back("/dev/ttyS" + std::to_string(k));
    for (auto _ : state) {
        int found = 0;
        for (const std::string& path : paths) {
            struct stat st {};
            found += ::stat(path.c_str(), &st) == 0;
        }
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(StatDevicePaths);

void CleanRS232DirectRealPorts(benchmark::State& state) {
    BenchStore bench;
    auto ports = std::make_shared<LinuxSerialPortSource>(bench.store);
    CommsProfileManager manager(ports, bench.store);
    for (auto _ : state) {
        manager.CleanRS232Direct();
        benchmark::DoNotOptimize(manager.ApplicationProfileCount());
    }
    state.counters["profiles"] = manager.ApplicationProfileCount();
}
BENCHMARK(CleanRS232DirectRealPorts)->Unit(benchmark::kMicrosecond);

// Ports 1..60 present.
class SixtyPorts : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override {
        std::vector<SerialPort> ports;
        for (int n = 1; n <= 60; ++n) ports.push_back(SerialPort{static_cast<std::int16_t>(n), "", "", false});
        return ports;
    }
    bool Probe(const SerialPort&) override { return true; }
};

std::string ProfileText(int i, int port, const char* type, const char* method) {
    return "<PROFILE><KEY>PROFILE" + std::to_string(i) + "</KEY><NAME>Device " + std::to_string(i) + "</NAME><TYPE>" +
           type + "</TYPE><METHOD>" + method + "</METHOD><COMMPORT>" + std::to_string(port) +
           "</COMMPORT><TELSWITCH>" + std::to_string(i % 3) + "</TELSWITCH><PHONENUMBER>0123 " + std::to_string(i) +
           "</PHONENUMBER><HIDE>False</HIDE></PROFILE>";
}

// 100 profiles: 80 cables (ports from offset), 17 modems, UDP, TCP, GPRS.
std::string ProfilesText(int offset) {
    std::string text;
    for (int i = 0; i < 80; ++i) text += ProfileText(i, offset + i, "RS232", "DIRECT");
    for (int i = 80; i < 97; ++i) text += ProfileText(i, i - 79, "RS232", "PHONEMODEM");
    text += ProfileText(97, 0, "IP", "UDP") + ProfileText(98, 0, "IP", "TCP") + ProfileText(99, 0, "IP", "GPRSPROXY");
    return text;
}

const std::string& MapText() {
    static const std::string text = "<COMMSPROFILES>" + ProfilesText(1) + "</COMMSPROFILES>";
    return text;
}
const std::string& SchemeXml() {
    static const std::string text = "<SCHEME><COMMSPROFILES>" + ProfilesText(31) + "</COMMSPROFILES></SCHEME>";
    return text;
}

class ParsedScheme : public Scheme {
public:
    bool Open(const std::string&) override {
        document_ = XmlDocument::Parse(SchemeXml());
        return bool(document_);
    }
    std::string SchemeText() const override { return "bench"; }
    XmlNode CommsProfiles() const override { return document_.DocumentElement().SelectSingle("COMMSPROFILES"); }

private:
    XmlDocument document_;
};

void BareLibxml2ParseMapAndScheme(benchmark::State& state) {
    for (auto _ : state) {
        xmlDocPtr map = xmlReadMemory(MapText().data(), int(MapText().size()), nullptr, nullptr, XML_PARSE_NONET);
        xmlDocPtr scheme =
            xmlReadMemory(SchemeXml().data(), int(SchemeXml().size()), nullptr, nullptr, XML_PARSE_NONET);
        benchmark::DoNotOptimize(map);
        benchmark::DoNotOptimize(scheme);
        xmlFreeDoc(map);
        xmlFreeDoc(scheme);
    }
}
BENCHMARK(BareLibxml2ParseMapAndScheme)->Unit(benchmark::kMicrosecond);

void MapScheme100Onto100(benchmark::State& state) {
    BenchStore bench;
    std::string file = bench.folder + "/CommsProfiles.xml";
    FILE* out = std::fopen(file.c_str(), "wb");
    std::fwrite(MapText().data(), 1, MapText().size(), out);
    std::fclose(out);
    CommsProfileManager manager(std::make_shared<SixtyPorts>(), bench.store);
    manager.LoadXMLMapFile(file);
    manager.setMapFile("");
    ParsedScheme scheme;
    std::size_t after = 0;
    for (auto _ : state) {
        scheme.Open("");  // a fresh copy each time: mapping changes it
        manager.MapSchemeCommsProfiles(scheme);
        after = scheme.CommsProfiles().CountChildElements("PROFILE");
    }
    state.counters["profiles_after"] = double(after);
}
BENCHMARK(MapScheme100Onto100)->Unit(benchmark::kMicrosecond);

// The map's save (declared windows-1252, so written through the encoder) against libxml2's own
// save of the same document.
std::string DeclaredMapFile(const std::string& folder) {
    const std::string file = folder + "/CommsProfiles.xml";
    const std::string text = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>" + MapText();
    FILE* out = std::fopen(file.c_str(), "wb");
    std::fwrite(text.data(), 1, text.size(), out);
    std::fclose(out);
    return file;
}

void BareLibxml2SaveMap(benchmark::State& state) {
    BenchStore bench;
    xmlDocPtr doc = xmlReadFile(DeclaredMapFile(bench.folder).c_str(), nullptr, XML_PARSE_NONET);
    const std::string out = bench.folder + "/bare-out.xml";
    for (auto _ : state) benchmark::DoNotOptimize(xmlSaveFile(out.c_str(), doc));
    xmlFreeDoc(doc);
}
BENCHMARK(BareLibxml2SaveMap)->Unit(benchmark::kMicrosecond);

void SaveXMLMapFile(benchmark::State& state) {
    BenchStore bench;
    CommsProfileManager manager(std::make_shared<SixtyPorts>(), bench.store);
    manager.LoadXMLMapFile(DeclaredMapFile(bench.folder));
    const std::string out = bench.folder + "/out.xml";
    for (auto _ : state) benchmark::DoNotOptimize(manager.SaveXMLMapFile(out));
    manager.setMapFile("");
}
BENCHMARK(SaveXMLMapFile)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
