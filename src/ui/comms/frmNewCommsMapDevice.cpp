#include <meridex/ui/comms/frmNewCommsMapDevice.h>

#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>

namespace meridex::ui {
namespace {

struct Kind {
    const char* key;
    std::string_view text;
    const char* icon;
};

constexpr Kind kKinds[] = {
    {"DIRECT", CommsProfileManager::kDirectText, "DIRECT"},
    {"PHONEMODEM", CommsProfileManager::kPhoneModemText, "PHONEMODEM"},
    {"UDP", CommsProfileManager::kUdpText, "IP"},
    {"TCP", CommsProfileManager::kTcpText, "IP"},
    {"GPRSPROXY", CommsProfileManager::kGprsProxyText, "IP"},
};

}  // namespace

frmNewCommsMapDevice::frmNewCommsMapDevice(std::shared_ptr<SerialPortSource> ports, std::shared_ptr<UserStore> store,
                                           QWidget* parent)
    : CancellableDialog(QStringLiteral("frmNewCommsMapDevice"), parent), ports_(std::move(ports)),
      store_(std::move(store)) {
    setWindowTitle(QStringLiteral("New Device"));
    auto* lblCommsType = new QLabel(QStringLiteral("&Kind of device:"), this);
    lblCommsType->setObjectName(QStringLiteral("lblCommsType"));
    lvCommsType = ListView(QStringLiteral("lvCommsType"), this);
    lvCommsType->setIconSize(QSize(20, 20));
    lvCommsType->setMinimumSize(260, 150);
    TieLabel(lblCommsType, lvCommsType);
    for (const Kind& kind : kKinds) {
        auto* row = new QTreeWidgetItem(lvCommsType, QStringList{QString::fromUtf8(kind.text.data(),
                                                                                  static_cast<int>(kind.text.size()))});
        setItemKey(row, QString::fromLatin1(kind.key));
        setImageKey(row, QString::fromLatin1(kind.icon));
    }
    // Nothing is chosen until the person chooses.
    lvCommsType->setCurrentItem(nullptr);
    lvCommsType->clearSelection();

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblCommsType);
    layout->addWidget(lvCommsType, 1);
    layout->addLayout(ButtonRow());
    resize(320, 250);

    connect(lvCommsType, &QTreeWidget::itemDoubleClicked, this, &frmNewCommsMapDevice::lvCommsType_DblClick);
    // Every way of cancelling clears the choice, so NewDevice gives none.
    connect(this, &QDialog::rejected, this, [this] {
        lvCommsType->clearSelection();
        lvCommsType->setCurrentItem(nullptr);
    });
}

void frmNewCommsMapDevice::lvCommsType_DblClick() {
    if (!lvCommsType->selectedItems().isEmpty()) cmdOK_Click();
}

XmlNode frmNewCommsMapDevice::NewDevice() const {
    const QList<QTreeWidgetItem*> selected = lvCommsType->selectedItems();
    if (selected.isEmpty()) return {};
    const QString key = ItemKey(selected.front());
    // A map of its own, as the behaviour asks; it is never saved (no MapFile), and the profile's
    // view keeps its document alive after the manager ends.
    CommsProfileManager scratch(ports_, store_);
    if (key == QLatin1String("DIRECT")) return scratch.AddRS232Direct("1");
    if (key == QLatin1String("PHONEMODEM")) return scratch.AddRS232PhoneModem("1");
    if (key == QLatin1String("UDP")) return scratch.AddUDPConnection();
    if (key == QLatin1String("TCP")) return scratch.AddTCPConnection();
    if (key == QLatin1String("GPRSPROXY")) return scratch.AddGPRSProxyConnection();
    return {};
}

}  // namespace meridex::ui
