// The address book's dialogs: the editor on a water authority's book, the two site dialogs, and
// the import form halfway through a run.
#include <memory>

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <meridex/platform/linux/IniUserStore.h>
#include <meridex/addressbook/AddressBook.h>
#include <meridex/comms/CommsProfileManager.h>
#include <meridex/frame/RecordingUserInterface.h>
#include <meridex/ui/addressbook/frmAddressBook.h>
#include <meridex/ui/addressbook/frmImport.h>
#include <meridex/ui/addressbook/frmNewSite.h>
#include <meridex/ui/addressbook/frmSelectSite.h>
#include <meridex/ui/frame/ProgressPicture.h>

#include "../../comms/CommsTestSupport.h"
#include "Scene.h"

using namespace meridex;
using namespace meridex::ui;

namespace {

const char* const kMap =
    "<COMMSPROFILES>"
    "<PROFILE><NAME>Field Laptop Cable</NAME><TYPE>RS232</TYPE><METHOD>DIRECT</METHOD><BAUDRATE>9600</BAUDRATE>"
    "<COMMPORT>1</COMMPORT><ICON>DIRECT</ICON></PROFILE>"
    "<PROFILE><NAME>Office Modem</NAME><TYPE>RS232</TYPE><METHOD>PHONEMODEM</METHOD><BAUDRATE>9600</BAUDRATE>"
    "<COMMPORT>3</COMMPORT><FORCEPROMPT>K</FORCEPROMPT><ICON>PHONEMODEM</ICON></PROFILE>"
    "<PROFILE><NAME>Telemetry Gateway</NAME><TYPE>IP</TYPE><METHOD>GPRSPROXY</METHOD>"
    "<IPADDRESS>10.20.0.5</IPADDRESS><IPPORT>4001</IPPORT><ICON>IP</ICON></PROFILE>"
    "<PROFILE><NAME>Depot Network</NAME><TYPE>IP</TYPE><METHOD>TCP</METHOD><IPADDRESS>192.168.4.20</IPADDRESS>"
    "<IPPORT>502</IPPORT><ICON>IP</ICON></PROFILE>"
    "</COMMSPROFILES>";

Site Gauge(const std::string& name, const std::string& phone) {
    Site site;
    site.setName(name);
    site.SetParameter("NAME", "Office Modem");
    site.SetParameter("TYPE", "RS232");
    site.SetParameter("METHOD", "PHONEMODEM");
    site.SetParameter("BAUDRATE", "9600");
    site.SetParameter("COMMPORT", "3");
    site.SetParameter("PHONENUMBER", phone);
    site.SetParameter("FORCEPROMPT", "K");
    return site;
}

SiteGroup Group(const SiteGroup& parent, const std::string& name) {
    SiteGroup group;
    group.setName(name);
    parent.AddGroup(group);
    return group;
}

// A regional water authority's book: catchments holding river and rain gauges.
void FillBook(AddressBook& book) {
    const SiteGroup north = Group(book.Sites(), "Northern Region");
    const SiteGroup tweed = Group(north, "Tweed Catchment");
    tweed.AddSite(Gauge("Tweed at Boleside", "01896 752 114"));
    tweed.AddSite(Gauge("Ettrick at Lindean", "01750 321 980"));
    tweed.AddSite(Gauge("Gala Water at Galashiels", "01896 755 402"));
    Group(north, "Coquet Catchment").AddSite(Gauge("Coquet at Rothbury", "01669 620 331"));
    north.AddSite(Gauge("Kielder Reservoir Outflow", "01434 250 118"));
    const SiteGroup south = Group(book.Sites(), "Southern Region");
    Group(south, "Test Catchment").AddSite(Gauge("Test at Broadlands", "01794 517 260"));
    Group(south, "Itchen Catchment");
    Group(book.Sites(), "Rain Gauges");
    Site depot;
    depot.setName("Head Office Depot");
    depot.SetParameter("NAME", "Depot Network");
    depot.SetParameter("TYPE", "IP");
    depot.SetParameter("METHOD", "TCP");
    depot.SetParameter("IPADDRESS", "192.168.4.20");
    depot.SetParameter("IPPORT", "502");
    book.Sites().AddSite(depot);
}

// Files in a temporary folder that lives as long as the scene's window.
struct Files {
    QTemporaryDir dir;
    std::string File(const char* name) const { return dir.filePath(QString::fromLatin1(name)).toStdString(); }
    std::string Book() const {
        AddressBook book;
        book.LoadAddressBook(File("AddressBook.xml"));
        FillBook(book);
        book.SaveAddressBook();
        return File("AddressBook.xml");
    }
    std::string Map() const {
        QFile file(QString::fromStdString(File("CommsProfiles.xml")));
        file.open(QIODevice::WriteOnly);
        file.write(kMap);
        return File("CommsProfiles.xml");
    }
    std::shared_ptr<test::FakePorts> Ports() const { return std::make_shared<test::FakePorts>(std::initializer_list<int>{1, 3}); }
    std::shared_ptr<IniUserStore> Store() const { return std::make_shared<IniUserStore>(File("config")); }
};

class SceneEditor : public frmAddressBook {
public:
    SceneEditor() : frmAddressBook(std::make_shared<RecordingUserInterface>()) {
        setCommsSources(files_.Ports(), files_.Store());
        LoadAddressBook(files_.Book(), files_.Map(), files_.File("schemes"));
        // A catchment's gauge with its parameters, as a person opens it.
        for (QTreeWidgetItemIterator it(tvGroups); *it; ++it)
            if ((*it)->text(0) == QStringLiteral("Ettrick at Lindean")) tvGroups->setCurrentItem(*it);
        lvProfileElements->setCurrentItem(lvProfileElements->topLevelItem(5));
    }

private:
    Files files_;
};

class SceneNewSite : public frmNewSite {
public:
    SceneNewSite() : map_(files_.Ports(), files_.Store()) {
        map_.LoadXMLMapFile(files_.Map());
        setCommsDevices(&map_);
        lvDevices->setCurrentItem(lvDevices->topLevelItem(1));
        txtName->setText(QStringLiteral("Whiteadder at Hutton"));
    }

private:
    Files files_;
    CommsProfileManager map_;
};

class SceneSelectSite : public frmSelectSite {
public:
    SceneSelectSite() {
        book_.LoadAddressBook(files_.Book());
        setAddressBook(&book_);
    }

private:
    Files files_;
    AddressBook book_;
};

}  // namespace

MERIDEX_SCENE("frmAddressBook") { return std::make_unique<SceneEditor>(); }

MERIDEX_SCENE("frmNewSite") { return std::make_unique<SceneNewSite>(); }

MERIDEX_SCENE("frmSelectSite") { return std::make_unique<SceneSelectSite>(); }

MERIDEX_SCENE("frmImport") {
    auto form = std::make_unique<frmImport>();
    form->lblMessage->setText(QStringLiteral(
        "Processing Scheme: /srv/schemes/Northern Region/Tweed Catchment/Tweed at Boleside.xml"));
    form->picProgress->setProgress(0.62);
    return form;
}
