#include <meridex/ui/settings/frmEnterPassword.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <meridex/ui/frame/Controls.h>

namespace meridex::ui {

frmEnterPassword::frmEnterPassword(QWidget* parent) : CancellableDialog(QStringLiteral("frmEnterPassword"), parent) {
    setWindowTitle(QStringLiteral("Enter Password"));
    Label1 = new QLabel(QStringLiteral("Enter Password"), this);
    Label1->setObjectName(QStringLiteral("Label1"));
    txtPassword = new QLineEdit(this);
    txtPassword->setObjectName(QStringLiteral("txtPassword"));
    txtPassword->setEchoMode(QLineEdit::Password);
    txtPassword->setToolTip(QStringLiteral("Enter a password"));
    TieLabel(Label1, txtPassword);

    auto* field = new QHBoxLayout;
    field->addWidget(Label1);
    field->addWidget(txtPassword, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(field);
    layout->addSpacing(6);
    layout->addLayout(ButtonRow());
    setMinimumWidth(300);
}

}  // namespace meridex::ui
