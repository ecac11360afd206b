#include <meridex/ui/frame/CancellableDialog.h>

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>

namespace meridex::ui {

CancellableDialog::CancellableDialog(const QString& objectName, QWidget* parent) : QDialog(parent) {
    setObjectName(objectName);
    setModal(true);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(cmdOK, &QPushButton::clicked, this, &CancellableDialog::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &CancellableDialog::cmdCancel_Click);
}

void CancellableDialog::cmdOK_Click() {
    cancelled_ = false;
    Finish(Accepted);
}

void CancellableDialog::cmdCancel_Click() {
    cancelled_ = true;
    Finish(Rejected);
}

void CancellableDialog::reject() { cmdCancel_Click(); }

QHBoxLayout* CancellableDialog::ButtonRow() {
    // The buttons were made first; made again children now, they come last in the Tab order, after
    // the fields, and the focus starts in the first field, so what is typed goes there (OK stays the
    // default button for Enter).
    for (QPushButton* button : {cmdOK, cmdCancel}) {
        button->setParent(nullptr);
        button->setParent(this);
    }
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(cmdOK);
    row->addWidget(cmdCancel);
    return row;
}

void CancellableDialog::Finish(int result) {
    // done() may send a close event of its own; it must not be taken for the close box.
    finishing_ = true;
    done(result);
    finishing_ = false;
}

void CancellableDialog::closeEvent(QCloseEvent* event) {
    if (finishing_) {
        event->accept();
        return;
    }
    // The close box is refused as such and treated as Cancel, which hides the dialog.
    event->ignore();
    cmdCancel_Click();
}

void CancellableDialog::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: cmdOK_Click(); break;
    case Qt::Key_Escape: cmdCancel_Click(); break;
    default: QDialog::keyPressEvent(event); return;
    }
    event->accept();
}

}  // namespace meridex::ui
