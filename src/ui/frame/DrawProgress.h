#pragma once
#include <meridex/ui/Export.h>

#include <QString>

class QPainter;
class QRect;

namespace meridex::ui {

/// The text printed on a progress bar: the fraction (0 to 1) as a whole percentage, rounded by
/// adding 0.5 and taking the whole part, followed by "%"; a non-empty text goes before it ("Copying 42%").
MERIDEX_UI_EXPORT QString ProgressText(double fraction, const QString& text = {});

/// Draws a progress bar over area: white, the fraction's share of the width from the left filled
/// dark blue, and ProgressText centred, dark blue over white and white over dark blue.
MERIDEX_UI_EXPORT void DrawProgress(QPainter& painter, const QRect& area, double fraction, const QString& text = {});

}  // namespace meridex::ui
