#include <meridex/ui/settings/frmProfiles.h>

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <meridex/frame/Error.h>
#include <meridex/frame/Text.h>
#include <meridex/settings/Feature.h>
#include <meridex/settings/Profiles.h>
#include <meridex/settings/Settings.h>
#include <meridex/settings/V4StandardProfiles.h>
#include <meridex/ui/frame/Controls.h>
#include <meridex/ui/frame/ImageKeys.h>
#include <meridex/ui/frame/Trap.h>
#include <meridex/ui/settings/PasswordCoding.h>
#include <meridex/ui/settings/V4Dialogs.h>

namespace meridex::ui {
namespace {

constexpr const char* kUnlocked = "PROFILES_UNLOCKED";
constexpr const char* kPassword = "PROFILE_PASSWORD";
constexpr const char* kCurrentProfile = "CURRENT_PROFILE";

QString Q(const std::string& text) { return QString::fromStdString(text); }

// What a handler meets when the object it needs is missing.
Error NotSet() { return Error(91, "frmProfiles", "Object variable or With block variable not set"); }

}  // namespace

frmProfiles::frmProfiles(std::shared_ptr<UserInterface> ui, QWidget* parent) : QDialog(parent), ui_(std::move(ui)) {
    setObjectName(QStringLiteral("frmProfiles"));
    setWindowTitle(QStringLiteral("User Profiles"));
    BuildControls();
}

frmProfiles::~frmProfiles() = default;

void frmProfiles::BuildControls() {
    // Everything but the closing row sits in Scroller1, so a small window scrolls instead of squeezing.
    Scroller1 = new QScrollArea(this);
    Scroller1->setObjectName(QStringLiteral("Scroller1"));
    Scroller1->setWidgetResizable(true);
    Scroller1->setFrameShape(QFrame::NoFrame);
    Scroller1->setFocusPolicy(Qt::NoFocus);  // a container: Tab goes to the controls inside
    auto* content = new QWidget(Scroller1);
    content->setObjectName(QStringLiteral("picContent"));

    lblSelectProfile = new QLabel(QStringLiteral("&Profiles:"), content);
    lblSelectProfile->setObjectName(QStringLiteral("lblSelectProfile"));
    lvProfiles = ListView(QStringLiteral("lvProfiles"), content);
    TieLabel(lblSelectProfile, lvProfiles);
    cmdAddProfile = CommandButton(QStringLiteral("cmdAddProfile"), QStringLiteral("&Add..."), content);
    cmdDeleteProfile = CommandButton(QStringLiteral("cmdDeleteProfile"), QStringLiteral("&Delete"), content);
    lblSetCurrentProfile = new QLabel(QStringLiteral("C&urrent profile:"), content);
    lblSetCurrentProfile->setObjectName(QStringLiteral("lblSetCurrentProfile"));
    cboCurrentProfile = new QComboBox(content);
    cboCurrentProfile->setObjectName(QStringLiteral("cboCurrentProfile"));
    cboCurrentProfile->setEditable(false);
    lblSetCurrentProfile->setBuddy(cboCurrentProfile);

    fraProfile = new QGroupBox(QStringLiteral("Features"), content);
    fraProfile->setObjectName(QStringLiteral("fraProfile"));
    lvFeatures = ListView(QStringLiteral("lvFeatures"), fraProfile);
    lvFeatures->setAccessibleName(fraProfile->title());
    auto* frameLayout = new QVBoxLayout(fraProfile);
    frameLayout->addWidget(lvFeatures);

    auto* addDelete = new QHBoxLayout;
    addDelete->addWidget(cmdAddProfile);
    addDelete->addWidget(cmdDeleteProfile);
    addDelete->addStretch(1);
    auto* left = new QVBoxLayout;
    left->addWidget(lblSelectProfile);
    left->addWidget(lvProfiles, 1);
    left->addLayout(addDelete);
    left->addSpacing(8);
    left->addWidget(lblSetCurrentProfile);
    left->addWidget(cboCurrentProfile);
    auto* columns = new QHBoxLayout(content);
    columns->addLayout(left, 2);
    columns->addWidget(fraProfile, 5);
    Scroller1->setWidget(content);

    cmdLock = CommandButton(QStringLiteral("cmdLock"), QStringLiteral("Lock"), this);
    cmdOK = CommandButton(QStringLiteral("cmdOK"), QStringLiteral("OK"), this);
    cmdOK->setDefault(true);
    auto* closing = new QHBoxLayout;
    closing->addWidget(cmdLock);
    closing->addStretch(1);
    closing->addWidget(cmdOK);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Scroller1, 1);
    layout->addLayout(closing);

    lvProfiles->setMinimumWidth(170);
    lvFeatures->setMinimumWidth(420);
    content->setMinimumHeight(300);
    resize(780, 500);

    connect(lvProfiles, &QTreeWidget::currentItemChanged, this, [this] {
        if (!filling_) lvProfiles_ItemClick();
    });
    connect(cboCurrentProfile, &QComboBox::activated, this, &frmProfiles::cboCurrentProfile_Click);
    connect(lvFeatures, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (!filling_ && column == 0) lvFeatures_ItemCheck(item);
    });
    connect(cmdAddProfile, &QPushButton::clicked, this, &frmProfiles::cmdAddProfile_Click);
    connect(cmdDeleteProfile, &QPushButton::clicked, this, &frmProfiles::cmdDeleteProfile_Click);
    connect(cmdLock, &QPushButton::clicked, this, &frmProfiles::cmdLock_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmProfiles::cmdOK_Click);
}

void frmProfiles::ShowModal(Settings& settings, QWidget* owner, std::shared_ptr<UserInterface> ui) {
    frmProfiles form(std::move(ui), owner);
    form.setV4Settings(&settings);
    form.exec();
}

Settings& frmProfiles::Edited() const {
    if (!settings_) throw NotSet();
    return *settings_;
}

std::shared_ptr<UserInterface> frmProfiles::ui() const { return ui_ ? ui_ : UserInterface::Current(); }

void frmProfiles::Guard(const char* context, const std::function<void()>& body) {
    if (const auto failure = Trap(body)) {
        // The report itself must not throw back into Qt either.
        Trap([&] { ui()->MessageBox(FailureText(context, *failure), MessageButtons::OK, MessageIcon::Exclamation, {}); });
    }
}

void frmProfiles::setV4Settings(Settings* settings) {
    settings_ = settings;
    if (!settings_) return;
    LoadProfiles();
    SetLockState(settings_->GetBoolean(kUnlocked, true));
}

void frmProfiles::LoadProfiles() {
    Guard("frmProfiles:LoadProfiles", [&] {
        const Filling filling(filling_);
        lvProfiles->clear();
        cboCurrentProfile->clear();
        QList<QTreeWidgetItem*> rows;
        QStringList keys;
        const XmlNode collection = Edited().Profiles().XMLNode();
        for (XmlNode node = collection.FirstChildElement("PROFILE"); !node.IsNull();
             node = node.NextSiblingElement("PROFILE")) {
            const QString key = Q(Profile(node).Key());
            auto* row = new QTreeWidgetItem(QStringList{key});
            setItemKey(row, key);
            setImageKey(row, QStringLiteral("USER"));
            rows << row;
            keys << key;
        }
        lvProfiles->addTopLevelItems(rows);
        cboCurrentProfile->addItems(keys);
        if (!rows.isEmpty()) {
            qsizetype selected = 0;
            const Profile current = Edited().CurrentProfile();
            if (!current.IsNull()) {
                const std::string currentKey = current.Key();
                for (qsizetype i = 0; i < keys.size(); ++i) {
                    if (Text::EqualsIgnoreCase(keys[i].toStdString(), currentKey)) {
                        selected = i;
                        break;
                    }
                }
            }
            lvProfiles->setCurrentItem(rows[selected]);
            cboCurrentProfile->setCurrentIndex(static_cast<int>(selected));
        }
    });
    LoadSelectedProfile();
}

void frmProfiles::LoadSelectedProfile() {
    Guard("frmProfiles:LoadSelectedProfile", [&] {
        const Filling filling(filling_);
        lvFeatures->clear();
        loaded_ = Profile::None();
        const QTreeWidgetItem* selected = lvProfiles->currentItem();
        if (!selected) return;
        loaded_ = Edited().Profiles().Item(ItemKey(selected).toStdString());
        if (loaded_.IsNull()) return;
        QList<QTreeWidgetItem*> rows;
        for (XmlNode node = loaded_.XMLNode().FirstChildElement("FEATURE"); !node.IsNull();
             node = node.NextSiblingElement("FEATURE")) {
            const Feature feature(node);
            auto* row = new QTreeWidgetItem(QStringList{Q(feature.Description())});
            setItemKey(row, Q(feature.Key()));
            row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            row->setCheckState(0, feature.Available() ? Qt::Checked : Qt::Unchecked);
            rows << row;
        }
        lvFeatures->addTopLevelItems(rows);
    });
}

void frmProfiles::SetLockState(bool unlocked) {
    Guard("frmProfiles:SetLockState", [&] {
        for (QWidget* control : {static_cast<QWidget*>(lblSelectProfile), static_cast<QWidget*>(lvProfiles),
                                 static_cast<QWidget*>(cmdAddProfile), static_cast<QWidget*>(cmdDeleteProfile),
                                 static_cast<QWidget*>(lblSetCurrentProfile),
                                 static_cast<QWidget*>(cboCurrentProfile), static_cast<QWidget*>(lvFeatures)})
            control->setEnabled(unlocked);
        cmdLock->setText(unlocked ? QStringLiteral("Lock") : QStringLiteral("Unlock"));
    });
}

void frmProfiles::lvProfiles_ItemClick() {
    Guard("frmProfiles:lvProfiles_ItemClick", [&] { LoadSelectedProfile(); });
}

void frmProfiles::cboCurrentProfile_Click() {
    Guard("frmProfiles:cboCurrentProfile_Click", [&] {
        Settings& settings = Edited();
        const std::string chosen = cboCurrentProfile->currentText().toStdString();
        settings.setCurrentProfile(settings.Profiles().Item(chosen));
        settings.SetString(kCurrentProfile, chosen);
    });
}

void frmProfiles::lvFeatures_ItemCheck(QTreeWidgetItem* item) {
    Guard("frmProfiles:lvFeatures_ItemCheck", [&] {
        if (loaded_.IsNull()) return;
        loaded_.Item(ItemKey(item).toStdString()).setAvailable(item->checkState(0) == Qt::Checked);
    });
}

void frmProfiles::cmdAddProfile_Click() {
    Guard("frmProfiles:cmdAddProfile_Click", [&] {
        Settings& settings = Edited();
        const std::string name = V4Dialogs(ui()).InputBox("Enter new profile name", "New Profile");
        if (name.empty()) return;
        if (!settings.Profiles().Item(name).IsNull()) {
            ui()->MessageBox("Profile \"" + name + "\" already exists", MessageButtons::OK, MessageIcon::None, {});
            return;
        }
        const Profile profile = V4StandardProfiles::GetDefaultProfile();
        profile.setKey(name);
        settings.Profiles().Add(profile);
        LoadProfiles();
    });
}

void frmProfiles::cmdDeleteProfile_Click() {
    Guard("frmProfiles:cmdDeleteProfile_Click", [&] {
        Settings& settings = Edited();
        const Profiles profiles = settings.Profiles();
        if (profiles.Count() == 1) {
            ui()->MessageBox("You must have at least one profile", MessageButtons::OK, MessageIcon::Critical, {});
            return;
        }
        QTreeWidgetItem* selected = lvProfiles->currentItem();
        if (!selected) throw NotSet();
        const QString key = ItemKey(selected);
        if (ui()->MessageBox("Delete profile: " + key.toStdString(), MessageButtons::OKCancel, MessageIcon::Information,
                             {}, MessageDefaultButton::Second) == MessageResult::Cancel)
            return;

        const int index = lvProfiles->indexOfTopLevelItem(selected) + 1;
        const Profile removed = profiles.Item(index);
        const Profile current = settings.CurrentProfile();
        const bool wasCurrent = !current.IsNull() && !removed.IsNull() && current.XMLNode() == removed.XMLNode();
        profiles.Remove(index);
        {
            const Filling filling(filling_);
            delete selected;
            for (int i = 0; i < cboCurrentProfile->count(); ++i) {
                if (cboCurrentProfile->itemText(i) == key) {
                    cboCurrentProfile->removeItem(i);
                    break;
                }
            }
            if (wasCurrent && cboCurrentProfile->count() > 0) {
                cboCurrentProfile->setCurrentIndex(0);
                settings.setCurrentProfile(profiles.Item(cboCurrentProfile->itemText(0).toStdString()));
            }
            if (lvProfiles->topLevelItemCount() > 0) lvProfiles->setCurrentItem(lvProfiles->topLevelItem(0));
        }
        if (lvProfiles->topLevelItemCount() > 0) LoadSelectedProfile();
    });
}

void frmProfiles::cmdLock_Click() {
    Guard("frmProfiles:cmdLock_Click", [&] {
        Settings& settings = Edited();
        if (!settings.GetBoolean(kUnlocked, true)) {
            const std::string stored = settings.GetString(kPassword, "");
            if (!stored.empty()) {
                if (!V4Dialogs(ui()).EnterPassword(DecodePassword(stored))) {
                    ui()->MessageBox("Invalid password", MessageButtons::OK, MessageIcon::Exclamation, {});
                    return;
                }
                SetLockState(true);
                settings.SetBoolean(kUnlocked, true, true);
                // Unlocking forgets the password on purpose: the next lock asks for a new one.
                settings.SetString(kPassword, "", true);
            } else {
                SetLockState(true);
                settings.SetBoolean(kUnlocked, true, true);
            }
            return;
        }
        const std::string password = V4Dialogs(ui()).SetPassword();
        if (password.empty()) return;
        // Stored as windows-1252: any other character would come back as "?" and never match again.
        if (!Text::FitsWindows1252(password)) {
            ui()->MessageBox("The password holds characters that cannot be stored, so it could never be typed "
                             "again. Use only the letters, digits and signs of windows-1252 (Western European).",
                             MessageButtons::OK, MessageIcon::Exclamation, "Set Password");
            return;
        }
        SetLockState(false);
        settings.SetString(kPassword, EncodePassword(password), true);
        settings.SetBoolean(kUnlocked, false, true);
    });
}

void frmProfiles::cmdOK_Click() {
    Guard("frmProfiles:cmdOK_Click", [&] { accept(); });
}

}  // namespace meridex::ui
