// Renders the application icon's SVG to the PNG sizes of the hicolor theme,
// with Qt's own SVG renderer, so that the build needs no other tool.
//   render_icon ICON.svg OUTPUT_DIR SIZE...   writes OUTPUT_DIR/SIZExSIZE.png

#include <QImage>
#include <QPainter>
#include <QStringList>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc < 4) {
        std::fputs("usage: render_icon ICON.svg OUTPUT_DIR SIZE...\n", stderr);
        return 2;
    }
    QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
    if (!svg.isValid()) {
        std::fprintf(stderr, "render_icon: %s is not a readable SVG\n", argv[1]);
        return 1;
    }
    const QString outDir = QString::fromLocal8Bit(argv[2]);
    for (int i = 3; i < argc; ++i) {
        const int size = QString::fromLocal8Bit(argv[i]).toInt();
        if (size <= 0) {
            std::fprintf(stderr, "render_icon: %s is not a size\n", argv[i]);
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        svg.render(&painter);
        painter.end();
        const QString path = QStringLiteral("%1/%2x%2.png").arg(outDir).arg(size);
        if (!image.save(path)) {
            std::fprintf(stderr, "render_icon: could not write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
