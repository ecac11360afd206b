// The address book editor at a water authority's size, each measurement beside a core baseline
// doing the same document work without the window:
//   the editor loading a 20,000- and a 200,000-site book and filling its tree (with the heap each
//   holds), and destroying it                                   vs  AddressBook::LoadAddressBook
//   selecting a group of 1,000 sites (its list filled)           vs  reading those sites' names
//   importing 4,000 schemes through frmImport                    vs  the same import without the form
//     (with the longest gap between two paints of the form)
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <filesystem>
#include <memory>
#include <string>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTreeWidget>

#include "BenchFolder.h"
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/ImportCommsProfiles.h>
#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/platform/SerialPortSource.h>
#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/ui/addressbook/frmAddressBook.h>

namespace fs = std::filesystem;
using namespace meridex;

namespace {

// No serial ports: the map is not what is measured.
class NoPorts : public SerialPortSource {
public:
    std::vector<SerialPort> ListPorts() override { return {}; }
    bool Probe(const SerialPort&) override { return false; }
};

Site Gauge(int number) {
    Site site;
    site.setName("Gauge " + std::to_string(number));
    site.SetParameter("TYPE", "RS232");
    site.SetParameter("METHOD", "PHONEMODEM");
    site.SetParameter("BAUDRATE", "9600");
    site.SetParameter("COMMPORT", "3");
    site.SetParameter("PHONENUMBER", "0311 555 " + std::to_string(1000 + number % 9000));
    site.SetParameter("FORCEPROMPT", "K");
    return site;
}

// regions x catchments groups of perGroup sites each, written once under name.
std::string Book(const std::string& name, int regions, int catchments, int perGroup) {
    const std::string path = BenchFolder() + "/" + name;
    if (fs::exists(path)) return path;
    AddressBook book;
    book.LoadAddressBook(path);
    for (int r = 0; r < regions; ++r) {
        SiteGroup region;
        region.setName("Region " + std::to_string(r));
        book.Sites().AddGroup(region);
        for (int c = 0; c < catchments; ++c) {
            SiteGroup catchment;
            catchment.setName("Catchment " + std::to_string(c));
            region.AddGroup(catchment);
            for (int s = 0; s < perGroup; ++s) catchment.AddSite(Gauge(s));
        }
    }
    book.SaveAddressBook();
    return path;
}

const std::string& BigBook() {
    static const std::string path = Book("AddressBook.xml", 20, 10, 100);  // 20,000 sites
    return path;
}
// 200,000 sites: 20 regions of 100 catchments of 100 gauges, made on first use.
const std::string& HugeBook() {
    static const std::string path = Book("Huge.xml", 20, 100, 100);
    return path;
}
const std::string& BookOf(long sites) { return sites == 200000 ? HugeBook() : BigBook(); }

// Bytes of the heap in use now.
double HeapInUse() { return static_cast<double>(mallinfo2().uordblks); }
const std::string& WideBook() {
    static const std::string path = Book("Wide.xml", 1, 1, 1000);  // one group of 1,000 sites
    return path;
}

std::unique_ptr<ui::frmAddressBook> Editor() {
    auto editor = std::make_unique<ui::frmAddressBook>();
    editor->setCommsSources(std::make_shared<NoPorts>(), std::make_shared<IniUserStore>(BenchFolder() + "/config"));
    return editor;
}

// Each with the heap it holds once loaded (heap_MB).
void BM_BookLoad(benchmark::State& state) {
    const std::string file = BookOf(state.range(0));
    double held = 0;
    for (auto _ : state) {
        const double before = HeapInUse();
        AddressBook book;
        benchmark::DoNotOptimize(book.LoadAddressBook(file));
        held = HeapInUse() - before;
    }
    state.counters["heap_MB"] = held / 1e6;
}
BENCHMARK(BM_BookLoad)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

void BM_EditorLoad(benchmark::State& state) {
    const std::string map = BenchFolder() + "/missing-map.xml";
    const std::string file = BookOf(state.range(0));
    double held = 0;
    for (auto _ : state) {
        const double before = HeapInUse();
        auto editor = Editor();
        editor->LoadAddressBook(file, map, {});
        benchmark::DoNotOptimize(editor->tvGroups->topLevelItemCount());
        held = HeapInUse() - before;
    }
    state.counters["heap_MB"] = held / 1e6;
}
BENCHMARK(BM_EditorLoad)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

// Closing: the editor and its tree destroyed (the save on close is measured with the book's save).
void BM_EditorDestroy(benchmark::State& state) {
    const std::string map = BenchFolder() + "/missing-map.xml";
    const std::string file = BookOf(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto editor = Editor();
        editor->LoadAddressBook(file, map, {});
        state.ResumeTiming();
        editor.reset();
    }
}
BENCHMARK(BM_EditorDestroy)->Arg(20000)->Arg(200000)->Unit(benchmark::kMillisecond);

void BM_GroupNamesRead(benchmark::State& state) {
    AddressBook book;
    book.LoadAddressBook(WideBook());
    const SiteGroup group = book.FindGroup("\\Region 0\\Catchment 0");
    for (auto _ : state) {
        std::size_t length = 0;
        for (XmlNode child = group.XMLNode().FirstChildElement("SITE"); child; child = child.NextSiblingElement("SITE"))
            length += Site(child).Name().size() + Site(child).Path().size();
        benchmark::DoNotOptimize(length);
    }
}
BENCHMARK(BM_GroupNamesRead)->Unit(benchmark::kMillisecond);

void BM_GroupSelect(benchmark::State& state) {
    auto editor = Editor();
    editor->LoadAddressBook(WideBook(), BenchFolder() + "/missing-map.xml", {});
    QTreeWidgetItem* group = editor->tvGroups->topLevelItem(0)->child(0)->child(0);
    for (auto _ : state) {
        editor->tvGroups_NodeClick(group);
        benchmark::DoNotOptimize(editor->lvGroupList->topLevelItemCount());
    }
    state.counters["rows"] = editor->lvGroupList->topLevelItemCount();
}
BENCHMARK(BM_GroupSelect)->Unit(benchmark::kMillisecond);

// 4,000 schemes in 40 folders, each with one modem and one network profile, written once.
const std::string& Schemes() {
    static const std::string root = [] {
        const std::string folder = BenchFolder() + "/schemes";
        for (int f = 0; f < 40; ++f) {
            const std::string sub = folder + "/Area " + std::to_string(f);
            fs::create_directories(sub);
            for (int s = 0; s < 100; ++s) {
                std::ofstream(sub + "/Logger " + std::to_string(s) + ".xml")
                    << "<SCHEME><NAME>x</NAME><COMMSPROFILES>"
                       "<PROFILE><NAME>Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD>"
                       "<PHONENUMBER>0311 555 1000</PHONENUMBER></PROFILE>"
                       "<PROFILE><NAME>Net</NAME><TYPE>IP</TYPE><METHOD>TCP</METHOD></PROFILE>"
                       "</COMMSPROFILES></SCHEME>";
            }
        }
        return folder;
    }();
    return root;
}

void BM_ImportBare(benchmark::State& state) {
    for (auto _ : state) {
        AddressBook book;
        book.NewAddressBook();
        ImportCommsProfiles().ImportSchemes(Schemes(), book.Sites());
    }
}
BENCHMARK(BM_ImportBare)->Unit(benchmark::kMillisecond)->Iterations(3);

// Notes the longest time between two paints of any widget of the form.
class PaintGaps : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            if (clock.isValid()) longest = std::max(longest, clock.restart());
            else clock.start();
        }
        return false;
    }
    QElapsedTimer clock;
    qint64 longest = 0;
};

void BM_ImportThroughForm(benchmark::State& state) {
    qint64 longest = 0;
    for (auto _ : state) {
        AddressBook book;
        book.NewAddressBook();
        ui::frmImport form;
        PaintGaps gaps;
        for (QWidget* widget : form.findChildren<QWidget*>()) widget->installEventFilter(&gaps);
        form.installEventFilter(&gaps);
        form.StartImport(book, nullptr, Schemes());
        longest = std::max(longest, gaps.longest);
    }
    state.counters["longest_paint_gap_ms"] = static_cast<double>(longest);
}
BENCHMARK(BM_ImportThroughForm)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
