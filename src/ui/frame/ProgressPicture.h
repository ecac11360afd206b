#pragma once
#include <meridex/ui/Export.h>

#include <QFrame>
#include <QString>

namespace meridex::ui {

/// A picture box that shows a progress bar drawn by DrawProgress; it keeps the last fraction and
/// text it was given and draws them again whenever it is painted.
class MERIDEX_UI_EXPORT ProgressPicture : public QFrame {
    Q_OBJECT
public:
    /// An empty bar (0%) named objectName.
    explicit ProgressPicture(const QString& objectName, QWidget* parent = nullptr);

    /// Shows fraction (0 to 1) with text; repaints only when what is printed or filled changes.
    void setProgress(double fraction, const QString& text = {});
    /// The fraction last given.
    double Fraction() const noexcept { return fraction_; }
    /// The text the bar prints ("42%").
    QString ShownText() const;

    /// A bar's natural size: one line of text with room around it.
    QSize sizeHint() const override;

protected:
    /// Draws the bar and its text.
    void paintEvent(QPaintEvent* event) override;

private:
    double fraction_ = 0;
    QString text_;
};

}  // namespace meridex::ui
