#include <meridex/ui/comms/frmCommsMap.h>

#include <functional>
#include <map>
#include <optional>
#include <set>

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/comms/CommsProfileManager.h>
#include <meridex/comms/PortSnapshot.h>
#include <meridex/comms/ProfileXml.h>
#include <meridex/ui/comms/CommsIcons.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>
#include <meridex/ui/settings/V4Dialogs.h>

namespace meridex::ui {

namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }

// How a field is typed. Text fields are written as typed; the checked ones (numbers, ports,
// addresses) are checked as a whole when they are left and at OK, and only a valid text is written.
enum class Input { Text, Number, IpPort, Address, Password, ComPort, BaudRate, Prompt, Flag, Default };

bool Checked(Input input) {
    return input == Input::Number || input == Input::IpPort || input == Input::Address || input == Input::ComPort ||
           input == Input::BaudRate;
}

}  // namespace

struct frmCommsMap::Field {
    const char* element;
    const char* control;
    const char* caption;
    Input input;
    long long min = 0;  // the range of a number
    long long max = 0;
};

struct frmCommsMap::Frame {
    QGroupBox* box = nullptr;
    std::vector<const Field*> fields;
    std::vector<QWidget*> controls;
    std::vector<QLabel*> messages;  // where a checked field says what is wrong with it (null for the others)
    std::vector<QString> problems;  // what is wrong with each field's text now ("" when nothing)
    std::vector<char> edited;       // typed in since the profile was shown: only those are taken
    QLabel* portWarning = nullptr;
};

namespace {

using Field = frmCommsMap::Field;

// Every field the editor knows; the frames list theirs by position here.
const Field kFields[] = {
    {"NAME", "txtName", "Na&me:", Input::Text},                                            // 0
    {"COMMPORT", "cboCommPort", "&Port:", Input::ComPort, 1, 32767},                        // 1
    {"BAUDRATE", "cboBaudRate", "&Baud rate:", Input::BaudRate, 1, 4000000},                // 2
    {"RESET", "txtReset", "&Reset command:", Input::Text},                                  // 3
    {"SETTINGS", "txtSettings", "&Settings command:", Input::Text},                         // 4
    {"FORCEPROMPT", "cboForcePrompt", "&Force prompt:", Input::Prompt},                     // 5
    {"TELSWITCH", "txtTelSwitch", "&Telephone switch:", Input::Text},                       // 6
    {"PHONENUMBER", "txtPhoneNumber", "Phone n&umber:", Input::Text},                       // 7
    {"OUTSIDELINE", "txtOutsideLine", "&Outside line:", Input::Text},                       // 8
    {"PROXYADDRESS", "txtProxyAddress", "Pro&xy address:", Input::Address},                 // 9
    {"PROXYPORT", "txtProxyPort", "Proxy p&ort:", Input::IpPort, 1, 65535},                 // 10
    {"USERNAME", "txtUserName", "&User name:", Input::Text},                                // 11
    {"PASSWORD", "txtPassword", "Pass&word:", Input::Password},                             // 12
    {"ADDRESS", "txtAddress", "Add&ress:", Input::Address},                                 // 13
    {"PORT", "txtPort", "I&P port:", Input::IpPort, 1, 65535},                              // 14
    {"TIMEOUT", "txtTimeout", "&Time-out:", Input::Number, 1, 32767},                       // 15
    {"PROMPTTIMEOUT", "txtPromptTimeout", "Prompt t&ime-out:", Input::Number, 1, 32767},    // 16
    {"SENDBLOCKSIZE", "txtSendBlockSize", "Send &block size:", Input::Number, 1, 65535},    // 17
    {"MAXTESTMODECHANNELGAP", "txtMaxTestModeChannelGap", "Test mode channel &gap:", Input::Number, 0, 32767},  // 18
    {"ORVABT", "cbBluetooth", "Bluetooth &interface", Input::Flag},                         // 19
    {"HIDE", "cbHide", "&Hide from schemes", Input::Flag},                                  // 20
    {"DEFAULT", "cbDefault", "Default de&vice (for schemes that name none)", Input::Default},  // 21
};

// The frames, in the order of the stack: which fields each shows.
struct FrameSpec {
    const char* name;
    const char* title;
    const char* type;    // TYPE and METHOD of its profiles ("" for the frame of unknown kinds)
    const char* method;
    std::vector<int> fields;
};

const FrameSpec kFrames[] = {
    {"fraDirect", "Direct (RS232)", "RS232", "DIRECT", {0, 1, 2, 5, 6, 19, 20, 21}},
    {"fraPhoneModem", "Phone modem (RS232)", "RS232", "PHONEMODEM", {0, 1, 2, 3, 4, 5, 6, 7, 8, 20, 21}},
    {"fraUDP", "Network (UDP)", "IP", "UDP", {0, 13, 14, 15, 16, 17, 5, 20, 21}},
    {"fraTCP", "Network (TCP/IP)", "IP", "TCP", {0, 13, 14, 15, 17, 5, 20, 21}},
    {"fraGPRSProxy", "GPRS Proxy (Harvest Modem)", "IP", "GPRSPROXY", {0, 9, 10, 11, 12, 13, 15, 16, 17, 18, 5, 20, 21}},
    {"fraUnknown", "Device of an unknown kind", "", "", {0, 20, 21}},
};

// Elements every profile has that no frame edits: shown neither as fields nor as unknown children.
const std::set<std::string> kIdentity = {"KEY", "TYPE", "METHOD", "ICON"};

std::size_t FrameOf(const XmlNode& profile) {
    const std::string type = ProfileXml::ChildText(profile, "TYPE");
    const std::string method = ProfileXml::ChildText(profile, "METHOD");
    for (std::size_t i = 0; i + 1 < std::size(kFrames); ++i)
        if (type == kFrames[i].type && method == kFrames[i].method) return i;
    return std::size(kFrames) - 1;
}

bool IsIPv4(const QString& text) {
    static const QRegularExpression quad(QStringLiteral(
        "^((25[0-5]|2[0-4]\\d|1\\d\\d|[1-9]?\\d)\\.){3}(25[0-5]|2[0-4]\\d|1\\d\\d|[1-9]?\\d)$"));
    return quad.match(text).hasMatch();
}

// Eight groups of up to four hex digits, "::" standing for one run of zero groups, the last two
// groups possibly written as an IPv4 address, and a "%zone" after a link-local address.
bool IsIPv6(QString text) {
    if (const int zone = text.indexOf(QLatin1Char('%')); zone > 0) text.truncate(zone);
    const int gap = text.indexOf(QStringLiteral("::"));
    if (gap >= 0 && text.indexOf(QStringLiteral("::"), gap + 1) >= 0) return false;
    static const QRegularExpression group(QStringLiteral("^[0-9A-Fa-f]{1,4}$"));
    int groups = 0;
    const auto count = [&](const QString& part, bool last) {
        if (part.isEmpty()) return true;
        const QStringList pieces = part.split(QLatin1Char(':'));
        for (int i = 0; i < pieces.size(); ++i) {
            if (last && i == pieces.size() - 1 && IsIPv4(pieces[i])) {
                groups += 2;
                continue;
            }
            if (!group.match(pieces[i]).hasMatch()) return false;
            ++groups;
        }
        return true;
    };
    if (gap < 0) return count(text, true) && groups == 8;
    return count(text.left(gap), false) && count(text.mid(gap + 2), true) && groups < 8;
}

bool IsHostName(const QString& text) {
    static const QRegularExpression name(QStringLiteral(
        "^(?=.{1,253}\\.?$)[A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?(\\.[A-Za-z0-9]([A-Za-z0-9-]{0,61}[A-Za-z0-9])?)*\\.?$"));
    // "300.1.1.1" is a mistyped address, not a name: a name's last label is never all digits.
    static const QRegularExpression numeric(QStringLiteral("(^|\\.)\\d+\\.?$"));
    return name.match(text).hasMatch() && !numeric.match(text).hasMatch();
}

// "COM3 - USB serial", "com3" and "3" all name port 3; nullopt for anything else.
std::optional<int> TypedPort(const QString& text) {
    static const QRegularExpression port(QStringLiteral("^\\s*(?:COM)?(\\d{1,5})(?:\\D.*)?$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const auto match = port.match(text);
    if (!match.hasMatch()) return std::nullopt;
    return match.captured(1).toInt();
}

QString PortText(int number, const std::string& description) {
    return description.empty() ? QStringLiteral("COM%1").arg(number)
                               : QStringLiteral("COM%1 - %2").arg(number).arg(Q(description));
}

// A field's caption as it is said: "IP port" for "I&P port:".
QString Spoken(const Field& field) {
    QString caption = QString::fromUtf8(field.caption);
    caption.remove(QLatin1Char('&'));
    if (caption.endsWith(QLatin1Char(':'))) caption.chop(1);
    return caption;
}

// What is wrong with text as the whole value of a checked field; "" when nothing. An empty field
// is right: it leaves the element out.
QString Problem(const Field& field, const QString& text) {
    const QString value = text.trimmed();
    if (value.isEmpty()) return {};
    const auto outOfRange = [&](long long number) { return number < field.min || number > field.max; };
    switch (field.input) {
    case Input::ComPort: {
        const std::optional<int> number = TypedPort(value);
        if (!number || outOfRange(*number)) return QStringLiteral("Not a port: type COM and a number from 1 to 32767.");
        return {};
    }
    case Input::Address:
        if (IsIPv4(value) || IsIPv6(value) || IsHostName(value)) return {};
        return QStringLiteral("Enter an IPv4 or IPv6 address or a host name.");
    case Input::Number:
    case Input::IpPort:
    case Input::BaudRate: {
        bool number = false;
        const long long n = value.toLongLong(&number);
        if (number && !outOfRange(n)) return {};
        return QStringLiteral("%1 must be a number from %2 to %3.").arg(Spoken(field)).arg(field.min).arg(field.max);
    }
    default: return {};
    }
}

// The text a checked field stores: a port as its number, anything else as typed.
std::string Stored(const Field& field, const QString& text) {
    if (field.input == Input::ComPort) {
        const std::optional<int> number = TypedPort(text);
        return number ? std::to_string(*number) : std::string();
    }
    return text.trimmed().toStdString();
}

// A DEFAULT element marks its profile when its text is a number other than 0.
bool IsDefault(const XmlNode& profile) {
    bool number = false;
    const double value = Q(ProfileXml::ChildText(profile, "DEFAULT")).trimmed().toDouble(&number);
    return number && value != 0;
}

}  // namespace

frmCommsMap::frmCommsMap(std::shared_ptr<UserInterface> ui, std::shared_ptr<SerialPortSource> ports,
                         std::shared_ptr<UserStore> store, QWidget* parent)
    : QDialog(parent), ui_(std::move(ui)), ports_(std::move(ports)), store_(std::move(store)),
      companionFolder_(QCoreApplication::applicationDirPath().toStdString()) {
    setObjectName(QStringLiteral("frmCommsMap"));
    setWindowTitle(QStringLiteral("Communications Map"));
    BuildControls();
}

frmCommsMap::~frmCommsMap() {
    // The manager saves itself when it ends; an editor closed without OK must leave the file alone.
    if (map_) map_->setMapFile({});
}

std::shared_ptr<UserInterface> frmCommsMap::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

void frmCommsMap::Guard(const char* context, const std::function<void()>& body) {
    if (const auto failure = Trap(body))
        Trap([&] { ui()->MessageBox(FailureText(context, *failure), MessageButtons::OK, MessageIcon::Exclamation, {}); });
}

void frmCommsMap::BuildControls() {
    auto* lblDevices = new QLabel(QStringLiteral("&Devices:"), this);
    lblDevices->setObjectName(QStringLiteral("lblDevices"));
    lvDevices = ListView(QStringLiteral("lvDevices"), this);
    lvDevices->setIconSize(QSize(20, 20));
    lvDevices->setMinimumSize(220, 260);
    TieLabel(lblDevices, lvDevices);
    cmdAdd = CommandButton(QStringLiteral("cmdAdd"), QStringLiteral("&Add..."), this);
    cmdDelete = CommandButton(QStringLiteral("cmdDelete"), QStringLiteral("De&lete"), this);
    cmdScanPorts = CommandButton(QStringLiteral("cmdScanPorts"), QStringLiteral("Sca&n ports"), this);
    cmdScanPorts->setToolTip(QStringLiteral("Remove direct devices whose port has gone, add the new ports, and name them"));
    auto* listButtons = new QHBoxLayout;
    listButtons->addWidget(cmdAdd);
    listButtons->addWidget(cmdDelete);
    listButtons->addStretch(1);
    listButtons->addWidget(cmdScanPorts);
    auto* left = new QVBoxLayout;
    left->addWidget(lblDevices);
    left->addWidget(lvDevices, 1);
    left->addLayout(listButtons);

    stkFrames = new QStackedWidget(this);
    stkFrames->setObjectName(QStringLiteral("stkFrames"));
    for (const FrameSpec& frame : kFrames) MakeFrame(QLatin1String(frame.name), QLatin1String(frame.title), frame.fields);


    fraOtherFields = new QGroupBox(QStringLiteral("Other fields (kept as they are)"), this);
    fraOtherFields->setObjectName(QStringLiteral("fraOtherFields"));
    lvOtherFields = new QTreeWidget(fraOtherFields);
    lvOtherFields->setObjectName(QStringLiteral("lvOtherFields"));
    lvOtherFields->setAccessibleName(fraOtherFields->title());
    lvOtherFields->setColumnCount(2);
    lvOtherFields->setHeaderLabels({QStringLiteral("Field"), QStringLiteral("Value")});
    lvOtherFields->setRootIsDecorated(false);
    lvOtherFields->setSelectionMode(QAbstractItemView::NoSelection);
    lvOtherFields->setFocusPolicy(Qt::NoFocus);
    lvOtherFields->setMinimumHeight(70);
    lvOtherFields->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    auto* otherLayout = new QVBoxLayout(fraOtherFields);
    otherLayout->addWidget(lvOtherFields);

    auto* right = new QVBoxLayout;
    right->addWidget(stkFrames);
    right->addWidget(fraOtherFields, 1);

    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 2);
    columns->addLayout(right, 3);

    cmdOK = CommandButton(QStringLiteral("cmdOK"), QStringLiteral("OK"), this);
    cmdOK->setDefault(true);  // Enter anywhere in the editor is OK
    cmdOK->setToolTip(QStringLiteral("Save the map and close"));
    cmdCancel = CommandButton(QStringLiteral("cmdCancel"), QStringLiteral("&Cancel"), this);
    cmdCancel->setToolTip(QStringLiteral("Close without saving any change"));
    auto* closing = new QHBoxLayout;
    closing->addStretch(1);
    closing->addWidget(cmdOK);
    closing->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(closing);
    resize(760, 560);

    connect(lvDevices, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem*, QTreeWidgetItem* previous) {
        if (filling_) return;
        // The profile shown keeps the focus while one of its fields is wrong: nothing typed is lost.
        if (previous && !FieldsReady()) {
            const Filling filling(filling_);
            lvDevices->setCurrentItem(previous);
            return;
        }
        lvDevices_ItemClick();
    });
    connect(cmdAdd, &QPushButton::clicked, this, &frmCommsMap::cmdAdd_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmCommsMap::cmdDelete_Click);
    connect(cmdScanPorts, &QPushButton::clicked, this, &frmCommsMap::cmdScanPorts_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmCommsMap::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmCommsMap::cmdCancel_Click);
}

frmCommsMap::Frame& frmCommsMap::MakeFrame(const QString& name, const QString& title, const std::vector<int>& fields) {
    auto frame = std::make_unique<Frame>();
    frame->box = new QGroupBox(title, stkFrames);
    frame->box->setObjectName(name);
    auto* form = new QFormLayout(frame->box);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    static const QRegularExpression digits(QStringLiteral("\\d{0,9}"));
    static const QRegularExpression ipPort(QStringLiteral("\\d{0,5}"));
    static const QRegularExpression address(QStringLiteral("[A-Za-z0-9.:%_\\-]{0,255}"));
    for (int index : fields) {
        const Field& field = kFields[index];
        QWidget* control = nullptr;
        const QString controlName = QLatin1String(field.control);
        switch (field.input) {
        case Input::Flag:
        case Input::Default: {
            auto* box = new QCheckBox(QString::fromUtf8(field.caption), frame->box);
            connect(box, &QCheckBox::toggled, this, [this, box] { Field_Change(box); });
            control = box;
            break;
        }
        case Input::ComPort:
        case Input::BaudRate:
        case Input::Prompt: {
            auto* combo = new QComboBox(frame->box);
            combo->setEditable(true);
            combo->setMinimumWidth(130);
            combo->setInsertPolicy(QComboBox::NoInsert);
            if (field.input == Input::BaudRate) {
                for (const char* rate : {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"})
                    combo->addItem(QLatin1String(rate));
                combo->setValidator(new QRegularExpressionValidator(digits, combo));
            } else if (field.input == Input::Prompt) {
                for (const char* prompt : {"[RTS]", "[CR/LF]", "K"}) combo->addItem(QLatin1String(prompt));
                combo->setToolTip(QStringLiteral("[RTS], [CR/LF] or the text sent to wake the logger"));
            } else {
                combo->setToolTip(QStringLiteral("The serial ports present on this PC; another port number may be typed"));
            }
            connect(combo, &QComboBox::activated, this, [this, combo] { Field_Change(combo, true); });
            connect(combo->lineEdit(), &QLineEdit::textEdited, this, [this, combo] { Field_Change(combo); });
            control = combo;
            break;
        }
        default: {
            auto* edit = new QLineEdit(frame->box);
            if (field.input == Input::Number) edit->setValidator(new QRegularExpressionValidator(digits, edit));
            if (field.input == Input::IpPort) {
                edit->setValidator(new QRegularExpressionValidator(ipPort, edit));
                edit->setToolTip(QStringLiteral("1 to 65535"));
            }
            if (field.input == Input::Address) {
                edit->setValidator(new QRegularExpressionValidator(address, edit));
                edit->setToolTip(QStringLiteral("An IPv4 or IPv6 address or a host name"));
            }
            if (field.input == Input::Password) edit->setEchoMode(QLineEdit::Password);
            connect(edit, &QLineEdit::textEdited, this, [this, edit] { Field_Change(edit); });
            control = edit;
            break;
        }
        }
        control->setObjectName(controlName);
        if (qobject_cast<QCheckBox*>(control)) {
            form->addRow(QString(), control);
        } else {
            auto* label = new QLabel(QString::fromUtf8(field.caption), frame->box);
            label->setObjectName(QStringLiteral("lbl") + controlName.mid(3));
            TieLabel(label, control);
            form->addRow(label, control);
        }
        QLabel* message = nullptr;
        if (Checked(field.input)) {
            // Said beside the field, and tied to it as its description for a screen reader.
            message = new QLabel(frame->box);
            message->setObjectName(QStringLiteral("lbl") + controlName.mid(3) + QStringLiteral("Error"));
            message->setStyleSheet(QStringLiteral("color: #b00020;"));
            message->hide();
            form->addRow(QString(), message);
            // A checked field is taken when it is left, as a whole.
            control->installEventFilter(this);
            if (auto* combo = qobject_cast<QComboBox*>(control)) combo->lineEdit()->installEventFilter(this);
        }
        if (field.input == Input::ComPort) {
            frame->portWarning = new QLabel(frame->box);
            frame->portWarning->setObjectName(QStringLiteral("lblPortWarning"));
            frame->portWarning->setStyleSheet(QStringLiteral("color: #b00020;"));
            frame->portWarning->hide();
            form->addRow(QString(), frame->portWarning);
        }
        frame->fields.push_back(&field);
        frame->controls.push_back(control);
        frame->messages.push_back(message);
        frame->problems.emplace_back();
        frame->edited.push_back(false);
    }
    stkFrames->addWidget(frame->box);
    frames_.push_back(std::move(frame));
    return *frames_.back();
}

bool frmCommsMap::LoadMap(const std::string& mapFile) {
    bool loaded = false;
    Guard("frmCommsMap:LoadMap", [&] {
        map_ = std::make_unique<CommsProfileManager>(ports_, store_);
        loaded = map_->LoadXMLMapFile(mapFile);
        mapFile_ = mapFile;
        // Only OK writes the file: the manager must not save when it ends.
        map_->setMapFile({});
        saved_ = map_->ApplicationProfiles().Xml();
        LoadDevices();
        if (!loaded && !mapFile.empty() && QFileInfo::exists(Q(mapFile))) {
            ui()->MessageBox("The communications map " + mapFile +
                                 " could not be read. The editor shows a new map of this PC's devices instead.\n\n"
                                 "The file is kept as it is; when you choose OK it is first copied beside itself (" +
                                 QFileInfo(Q(mapFile)).fileName().toStdString() + ".unreadable).",
                             MessageButtons::OK, MessageIcon::Exclamation, {});
        }
    });
    return loaded;
}

void frmCommsMap::LoadDevices(const QString& selectKey) {
    Guard("frmCommsMap:LoadDevices", [&] {
        {
            const Filling filling(filling_);
            lvDevices->clear();
            if (!map_) return;
            QTreeWidgetItem* chosen = nullptr;
            const std::int16_t count = map_->ApplicationProfileCount();
            for (std::int16_t index = 1; index <= count; ++index) {
                const XmlNode profile = map_->ApplicationProfile(Index(index));
                auto* row = new QTreeWidgetItem(lvDevices, QStringList{Q(ProfileXml::ChildText(profile, "NAME"))});
                setItemKey(row, Q(ProfileXml::ChildText(profile, "KEY")));
                setImageKey(row, DeviceIconKey(profile));
                if (!chosen || (!selectKey.isEmpty() && ItemKey(row) == selectKey)) chosen = row;
            }
            if (chosen) lvDevices->setCurrentItem(chosen);
        }
        lvDevices_ItemClick();
    });
}

XmlNode frmCommsMap::SelectedProfile() const {
    const QTreeWidgetItem* row = lvDevices->currentItem();
    if (!row || !map_) return {};
    return map_->ApplicationProfile(Index(ItemKey(row).toStdString()));
}

void frmCommsMap::lvDevices_ItemClick() {
    Guard("frmCommsMap:lvDevices_ItemClick", [&] { ShowProfile(SelectedProfile()); });
}

void frmCommsMap::ShowProfile(const XmlNode& profile) {
    const Filling filling(filling_);
    lvOtherFields->clear();
    cmdDelete->setEnabled(!profile.IsNull());
    shownProfile_ = profile;
    if (shown_)
        for (std::size_t i = 0; i < shown_->controls.size(); ++i) Mark(*shown_, i, {});
    if (profile.IsNull()) {
        shown_ = nullptr;
        stkFrames->setEnabled(false);
        fraOtherFields->hide();
        return;
    }
    stkFrames->setEnabled(true);
    Frame& frame = *frames_[FrameOf(profile)];
    shown_ = &frame;
    stkFrames->setCurrentWidget(frame.box);

    std::set<std::string> known = kIdentity;
    std::vector<std::int16_t> present;
    std::map<int, std::string> descriptions;
    if (frame.portWarning) {
        PortSnapshot ports(map_->Ports());
        present = ports.PresentPorts(map_->MaxCommPort());
        for (std::int16_t number : present)
            if (const SerialPort* port = ports.Find(number)) descriptions[number] = port->description;
    }
    for (std::size_t i = 0; i < frame.fields.size(); ++i) {
        const Field& field = *frame.fields[i];
        known.insert(field.element);
        const QString value = Q(ProfileXml::ChildText(profile, field.element));
        QWidget* control = frame.controls[i];
        Mark(frame, i, {});
        frame.edited[i] = false;
        if (auto* box = qobject_cast<QCheckBox*>(control)) {
            box->setChecked(field.input == Input::Default ? IsDefault(profile) : ProfileXml::IsTrueText(value.toStdString()));
        } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
            if (field.input == Input::ComPort) {
                combo->clear();
                for (std::int16_t number : present) combo->addItem(PortText(number, descriptions[number]), int(number));
                const std::optional<int> number = TypedPort(value);
                const int item = number ? combo->findData(*number) : -1;
                if (item >= 0) combo->setCurrentIndex(item);
                else combo->setEditText(number ? QStringLiteral("COM%1").arg(*number) : value);
                ShowPortWarning(frame, combo->currentText());
            } else {
                combo->setEditText(value);
            }
        } else if (auto* edit = qobject_cast<QLineEdit*>(control)) {
            edit->setText(value);
        }
    }
    for (XmlNode child = profile.FirstChildElement(); child; child = child.NextSiblingElement()) {
        if (known.count(child.Name())) continue;
        new QTreeWidgetItem(lvOtherFields, QStringList{Q(child.Name()), Q(child.Text())});
    }
    fraOtherFields->setVisible(lvOtherFields->topLevelItemCount() > 0);
}

void frmCommsMap::ShowPortWarning(Frame& frame, const QString& text) {
    if (!frame.portWarning) return;
    const std::optional<int> number = TypedPort(text);
    QString warning;
    if (number && *number > 0 && *number <= 32767 && !PortSnapshot(map_->Ports()).IsPresent(static_cast<std::int16_t>(*number)))
        warning = QStringLiteral("\u26a0 COM%1 is not present on this PC").arg(*number);
    frame.portWarning->setText(warning);
    frame.portWarning->setVisible(!warning.isEmpty());
}

void frmCommsMap::Mark(Frame& frame, std::size_t i, const QString& problem) {
    frame.problems[i] = problem;
    QLabel* message = frame.messages[i];
    if (!message) return;
    message->setText(problem.isEmpty() ? QString() : QStringLiteral("\u26a0 ") + problem);
    message->setVisible(!problem.isEmpty());
    frame.controls[i]->setAccessibleDescription(problem);
}

QString frmCommsMap::TextOf(const QWidget* control) {
    if (const auto* combo = qobject_cast<const QComboBox*>(control)) return combo->currentText();
    if (const auto* edit = qobject_cast<const QLineEdit*>(control)) return edit->text();
    return {};
}

void frmCommsMap::Store(const Field& field, const std::string& value) {
    const XmlNode& profile = shownProfile_;
    if (profile.IsNull()) return;
    const bool present = ProfileXml::HasChild(profile, field.element);
    if (present && ProfileXml::ChildText(profile, field.element) == value) return;
    if (value.empty() && (Checked(field.input) || field.input == Input::Flag)) {
        // An empty number, address or port, or an unticked box, leaves the element out.
        if (present) profile.RemoveChild(profile.SelectSingle(field.element));
        return;
    }
    // Any other text is written as typed, "0" and empty included (an empty text adds no element).
    if (value.empty() && !present) return;
    ProfileXml::SetChild(profile, field.element, value);
}

bool frmCommsMap::Take(Frame& frame, std::size_t i) {
    const Field& field = *frame.fields[i];
    const QString text = TextOf(frame.controls[i]);
    const QString problem = Problem(field, text);
    Mark(frame, i, problem);
    if (field.input == Input::ComPort) ShowPortWarning(frame, problem.isEmpty() ? text : QString());
    if (!problem.isEmpty()) return false;
    Store(field, Stored(field, text));
    return true;
}

int frmCommsMap::TakeAll() {
    if (!shown_ || shownProfile_.IsNull()) return -1;
    int first = -1;
    // Only what the person typed: a value read from the file stays exactly as it is.
    for (std::size_t i = 0; i < shown_->controls.size(); ++i)
        if (shown_->edited[i] && Checked(shown_->fields[i]->input) && !Take(*shown_, i) && first < 0)
            first = static_cast<int>(i);
    return first;
}

bool frmCommsMap::FieldsReady() {
    const int wrong = TakeAll();
    if (wrong < 0) return true;
    const Field& field = *shown_->fields[wrong];
    ui()->MessageBox("The field \"" + Spoken(field).toStdString() + "\" is not right: " +
                         shown_->problems[wrong].toStdString() + "\n\nCorrect it, or choose Cancel to leave the map as it was.",
                     MessageButtons::OK, MessageIcon::Exclamation, {});
    QWidget* control = shown_->controls[wrong];
    control->setFocus(Qt::OtherFocusReason);
    if (auto* edit = qobject_cast<QLineEdit*>(control)) edit->selectAll();
    if (auto* combo = qobject_cast<QComboBox*>(control)) combo->lineEdit()->selectAll();
    return false;
}

bool frmCommsMap::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut && !filling_ && shown_) {
        auto* control = qobject_cast<QWidget*>(watched);
        if (control && qobject_cast<QComboBox*>(control->parentWidget())) control = control->parentWidget();
        for (std::size_t i = 0; i < shown_->controls.size(); ++i)
            if (shown_->controls[i] == control && shown_->edited[i]) Guard("frmCommsMap:Field_Validate", [&] { Take(*shown_, i); });
    }
    return QDialog::eventFilter(watched, event);
}

void frmCommsMap::Field_Change(QWidget* control, bool chosen) {
    if (filling_ || !shown_) return;
    Guard("frmCommsMap:Field_Change", [&] {
        Frame& frame = *shown_;
        std::size_t i = 0;
        while (i < frame.controls.size() && frame.controls[i] != control) ++i;
        if (i == frame.controls.size()) return;
        const Field& field = *frame.fields[i];
        if (auto* box = qobject_cast<QCheckBox*>(control)) {
            if (field.input == Input::Default) {
                // One default device: ticking it here clears the mark of every other profile.
                for (std::int16_t n = 1; n <= map_->ApplicationProfileCount(); ++n) {
                    const XmlNode other = map_->ApplicationProfile(Index(n));
                    if (box->isChecked() && !(other == shownProfile_) && IsDefault(other)) ProfileXml::SetChild(other, "DEFAULT", "0");
                }
                if (box->isChecked() != IsDefault(shownProfile_))
                    if (box->isChecked() || ProfileXml::HasChild(shownProfile_, "DEFAULT"))
                        ProfileXml::SetChild(shownProfile_, "DEFAULT", box->isChecked() ? "-1" : "0");
                return;
            }
            // A stored true in another spelling ("True") stays as it is while the box stays ticked.
            if (box->isChecked() != ProfileXml::IsTrueText(ProfileXml::ChildText(shownProfile_, field.element)))
                Store(field, box->isChecked() ? "-1" : "");
            return;
        }
        if (Checked(field.input)) {
            frame.edited[i] = true;
            // Taken as a whole when it is left; a choice from its list is whole at once. A mark goes
            // as soon as the text is right again.
            if (chosen) Take(frame, i);
            else if (!frame.problems[i].isEmpty() && Problem(field, TextOf(control)).isEmpty()) Mark(frame, i, {});
            return;
        }
        const QString text = TextOf(control);
        Store(field, text.toStdString());
        if (field.element == std::string_view("NAME") && lvDevices->currentItem()) lvDevices->currentItem()->setText(0, text);
    });
}

void frmCommsMap::cmdAdd_Click() {
    Guard("frmCommsMap:cmdAdd_Click", [&] {
        if (!map_ || !FieldsReady()) return;
        V4Dialogs dialogs(ui_);
        dialogs.setCommsSources(ports_, store_);
        const XmlNode device = dialogs.SelectNewCommsDevice();
        if (device.IsNull()) return;
        map_->AddApplicationProfile(device);
        LoadDevices(Q(ProfileXml::ChildText(device, "KEY")));
    });
}

void frmCommsMap::cmdDelete_Click() {
    Guard("frmCommsMap:cmdDelete_Click", [&] {
        const XmlNode profile = SelectedProfile();
        if (profile.IsNull()) return;
        const std::string name = ProfileXml::ChildText(profile, "NAME");
        if (ui()->MessageBox("Delete device: " + name, MessageButtons::OKCancel, MessageIcon::Question, {},
                             MessageDefaultButton::Second) != MessageResult::OK)
            return;
        const int row = lvDevices->indexOfTopLevelItem(lvDevices->currentItem());
        map_->RemoveApplicationProfile(profile);
        LoadDevices();
        const int rows = lvDevices->topLevelItemCount();
        if (rows > 0) lvDevices->setCurrentItem(lvDevices->topLevelItem(std::min(row, rows - 1)));
    });
}

void frmCommsMap::cmdScanPorts_Click() {
    Guard("frmCommsMap:cmdScanPorts_Click", [&] {
        if (!map_ || !FieldsReady()) return;
        const auto names = [&] {
            std::vector<std::pair<XmlNode, std::string>> list;
            for (std::int16_t i = 1; i <= map_->ApplicationProfileCount(); ++i) {
                const XmlNode profile = map_->ApplicationProfile(Index(i));
                list.emplace_back(profile, ProfileXml::ChildText(profile, "NAME"));
            }
            return list;
        };
        const auto before = names();
        map_->CleanRS232Direct();
        map_->GetCommPortDescriptions(companionFolder_);
        const auto after = names();

        std::vector<std::string> lines;
        for (const auto& [profile, name] : before) {
            bool kept = false;
            for (const auto& [now, newName] : after) {
                if (!(now == profile)) continue;
                kept = true;
                if (newName != name) lines.push_back("Renamed: " + name + " \u2192 " + newName);
            }
            if (!kept) lines.push_back("Removed: " + name + " (its port has gone)");
        }
        for (const auto& [profile, name] : after) {
            bool old = false;
            for (const auto& entry : before) old = old || entry.first == profile;
            if (!old) lines.push_back("Added: " + name);
        }
        const QTreeWidgetItem* current = lvDevices->currentItem();
        LoadDevices(current ? ItemKey(current) : QString());
        std::string text = "The ports are as the map has them: nothing changed.";
        if (!lines.empty()) {
            text = "The map was brought in step with the ports of this PC:";
            for (const std::string& line : lines) text += "\n" + line;
        }
        ui()->MessageBox(text, MessageButtons::OK, MessageIcon::Information, "Scan ports");
    });
}

void frmCommsMap::cmdOK_Click() {
    Guard("frmCommsMap:cmdOK_Click", [&] {
        if (!map_) {
            accept();
            return;
        }
        // A field whose text is wrong is named and gets the focus; nothing of it is in the map.
        if (!FieldsReady()) return;
        std::string error;
        if (!map_->SaveXMLMapFile(mapFile_, &error)) {
            map_->setMapFile({});
            ui()->MessageBox("The communications map could not be saved to " + mapFile_ + ":\n" + error +
                                 "\n\nNothing was lost: the editor stays open.",
                             MessageButtons::OK, MessageIcon::Exclamation, {});
            return;
        }
        map_->setMapFile({});
        saved_ = map_->ApplicationProfiles().Xml();
        accept();
    });
}

void frmCommsMap::cmdCancel_Click() { reject(); }

bool frmCommsMap::Changed() {
    if (!map_) return false;
    // A field still being typed counts: a right one is taken, a wrong one is a change not yet in the map.
    return TakeAll() >= 0 || map_->ApplicationProfiles().Xml() != saved_;
}

void frmCommsMap::reject() {
    bool discard = true;
    Guard("frmCommsMap:reject", [&] {
        if (Changed())
            // Keeping is the default, and closing the question without a choice keeps editing too.
            discard = ui()->Choose("You have changed the communications map. Discard your changes?",
                                   {"&Keep Editing", "&Discard Changes"}, MessageIcon::Question, "Discard changes",
                                   0) == 1;
    });
    if (!discard) return;
    // Every change lives only in the map in memory; it goes unsaved.
    if (map_) map_->setMapFile({});
    QDialog::reject();
}

}  // namespace meridex::ui
