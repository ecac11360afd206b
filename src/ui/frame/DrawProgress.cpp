#include <meridex/ui/frame/DrawProgress.h>

#include <algorithm>
#include <cmath>

#include <QColor>
#include <QPainter>
#include <QRect>

#include <meridex/comms/SystemOps.h>

namespace meridex::ui {
namespace {

const QColor kDarkBlue(0x00, 0x00, 0x80);  // 0x800000 in blue-green-red order
const QColor kWhite(0xFF, 0xFF, 0xFF);

}  // namespace

QString ProgressText(double fraction, const QString& text) {
    const QString percent = QString::number(SystemOps::ProgressPercent(fraction)) + QLatin1Char('%');
    return text.isEmpty() ? percent : text + QLatin1Char(' ') + percent;
}

void DrawProgress(QPainter& painter, const QRect& area, double fraction, const QString& text) {
    const double share = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0;
    const int filled = static_cast<int>(std::lround(area.width() * share));
    const QRect done(area.left(), area.top(), filled, area.height());
    const QRect left(area.left() + filled, area.top(), area.width() - filled, area.height());
    const QString shown = ProgressText(fraction, text);

    painter.save();
    painter.fillRect(left, kWhite);
    painter.fillRect(done, kDarkBlue);
    // The text changes colour where the bar reaches it, so it reads on both parts.
    painter.setClipRect(left);
    painter.setPen(kDarkBlue);
    painter.drawText(area, Qt::AlignCenter, shown);
    painter.setClipRect(done);
    painter.setPen(kWhite);
    painter.drawText(area, Qt::AlignCenter, shown);
    painter.restore();
}

}  // namespace meridex::ui
