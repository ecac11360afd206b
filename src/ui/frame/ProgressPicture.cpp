#include <meridex/ui/frame/ProgressPicture.h>

#include <QPainter>

#include <meridex/ui/frame/DrawProgress.h>

namespace meridex::ui {

ProgressPicture::ProgressPicture(const QString& objectName, QWidget* parent) : QFrame(parent) {
    setObjectName(objectName);
    setFrameShape(QFrame::Panel);
    setFrameShadow(QFrame::Sunken);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ProgressPicture::setProgress(double fraction, const QString& text) {
    const bool same = ProgressText(fraction, text) == ShownText() &&
                      qRound(fraction * contentsRect().width()) == qRound(fraction_ * contentsRect().width());
    fraction_ = fraction;
    text_ = text;
    if (!same) update();
}

QString ProgressPicture::ShownText() const { return ProgressText(fraction_, text_); }

QSize ProgressPicture::sizeHint() const {
    const int line = fontMetrics().height();
    return {fontMetrics().horizontalAdvance(QStringLiteral("100%")) * 4, line + line / 2 + 2 * frameWidth()};
}

void ProgressPicture::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    DrawProgress(painter, contentsRect(), fraction_, text_);
}

}  // namespace meridex::ui
