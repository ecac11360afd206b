#pragma once
// Internal to the dialog library: the plain controls the dialogs build their forms from.
#include <QString>

class QLabel;
class QPushButton;
class QTreeWidget;
class QWidget;

namespace meridex::ui {

/// Marks a dialog as filling its controls while it lives, so that the change signals the filling
/// raises are not taken for the person's edits; the flag gets its earlier value back afterwards.
class Filling {
public:
    explicit Filling(bool& flag) : flag_(flag), was_(flag) { flag_ = true; }
    ~Filling() { flag_ = was_; }
    Filling(const Filling&) = delete;
    Filling& operator=(const Filling&) = delete;

private:
    bool& flag_;
    bool was_;
};

/// A one-column list named name: no header, no tree lines, one row chosen at a time.
QTreeWidget* ListView(const QString& name, QWidget* parent);

/// A label named name showing text.
QLabel* NamedLabel(const QString& name, const QString& text, QWidget* parent);

/// Ties label to control: the label's access key moves the focus there, and a screen reader says the
/// label's text (without "&" and a closing ":") as the control's name, lists and trees included.
void TieLabel(QLabel* label, QWidget* control);

/// A button named name that Enter in a field of the dialog does not press.
QPushButton* CommandButton(const QString& name, const QString& caption, QWidget* parent);

}  // namespace meridex::ui
