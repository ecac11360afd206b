// `make screenshots`: renders every registered scene offscreen to DIR/NAME.png, with a plain title
// bar that shows the window's caption (the offscreen platform draws no window frame).
// Usage: meridex-screenshots DIR [NAME...]
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <QApplication>
#include <QPainter>
#include <QPixmap>
#include <QStringList>

#include "Scene.h"

namespace meridex::screenshots {
namespace {

QPixmap WithTitleBar(const QWidget& window, const QPixmap& content) {
    const int bar = 28;
    QPixmap framed(content.width() + 2, content.height() + bar + 1);
    framed.fill(QColor(0x5a, 0x6b, 0x7d));
    QPainter painter(&framed);
    painter.drawPixmap(1, bar, content);
    painter.setPen(Qt::white);
    QFont font = window.font();
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(QRect(10, 0, framed.width() - 40, bar), Qt::AlignVCenter | Qt::AlignLeft, window.windowTitle());
    painter.drawText(QRect(framed.width() - 28, 0, 22, bar), Qt::AlignCenter, QStringLiteral("\u2715"));
    return framed;
}

}  // namespace
}  // namespace meridex::screenshots

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: meridex-screenshots DIR [NAME...]\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    QStringList only;
    for (int i = 2; i < argc; ++i) only << QString::fromLocal8Bit(argv[i]);

    int failures = 0;
    for (const auto& scene : meridex::screenshots::Scenes()) {
        if (!only.isEmpty() && !only.contains(QString::fromStdString(scene.name))) continue;
        std::unique_ptr<QWidget> widget = scene.make();
        widget->show();
        QApplication::setActiveWindow(widget.get());
        for (int i = 0; i < 5; ++i) QApplication::processEvents();
        const QPixmap picture = meridex::screenshots::WithTitleBar(*widget, widget->grab());
        const std::filesystem::path file = folder / (scene.name + ".png");
        if (picture.save(QString::fromStdString(file.string()))) {
            std::printf("%s\n", file.string().c_str());
        } else {
            std::fprintf(stderr, "cannot write %s\n", file.string().c_str());
            ++failures;
        }
        widget->hide();
    }
    return failures == 0 ? 0 : 1;
}
