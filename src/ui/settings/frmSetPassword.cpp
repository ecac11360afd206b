#include <meridex/ui/settings/frmSetPassword.h>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <meridex/ui/frame/Controls.h>

namespace meridex::ui {
namespace {

QLineEdit* PasswordField(const QString& name, QWidget* parent) {
    auto* field = new QLineEdit(parent);
    field->setObjectName(name);
    field->setEchoMode(QLineEdit::Password);
    return field;
}

}  // namespace

frmSetPassword::frmSetPassword(QWidget* parent) : CancellableDialog(QStringLiteral("frmSetPassword"), parent) {
    setWindowTitle(QStringLiteral("Set Password"));
    Label1 = new QLabel(QStringLiteral("Enter Password"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    txtPassword = PasswordField(QStringLiteral("txtPassword"), this);
    Label2 = new QLabel(QStringLiteral("Re-enter Password"), this);
    Label2->setObjectName(QStringLiteral("Label2"));
    txtPassword2 = PasswordField(QStringLiteral("txtPassword2"), this);
    TieLabel(Label1, txtPassword);
    TieLabel(Label2, txtPassword2);

    auto* fields = new QGridLayout;
    fields->addWidget(Label1, 0, 0);
    fields->addWidget(txtPassword, 0, 1);
    fields->addWidget(Label2, 1, 0);
    fields->addWidget(txtPassword2, 1, 1);
    fields->setColumnStretch(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addSpacing(6);
    layout->addLayout(ButtonRow());
    setMinimumWidth(340);
}

}  // namespace meridex::ui
