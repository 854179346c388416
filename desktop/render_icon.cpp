// Build-time tool: renders the program's SVG icon as a square PNG of the given size.
//   quillora-render-icon ICON.svg SIZE OUT.png
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s ICON.svg SIZE OUT.png\n", argv[0]);
        return 2;
    }
    // No display is needed to draw into an image.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int size = QString::fromLocal8Bit(argv[2]).toInt();
    if (size < 8 || size > 1024) {
        std::fprintf(stderr, "bad size: %s\n", argv[2]);
        return 2;
    }
    QImageReader reader(QString::fromLocal8Bit(argv[1]));
    reader.setScaledSize(QSize(size, size));
    QImage image = reader.read();
    if (image.isNull()) {
        std::fprintf(stderr, "cannot render %s: %s\n", argv[1], qPrintable(reader.errorString()));
        return 1;
    }
    const QString out = QString::fromLocal8Bit(argv[3]);
    QDir().mkpath(QFileInfo(out).absolutePath());
    if (!image.convertToFormat(QImage::Format_ARGB32).save(out, "PNG")) {
        std::fprintf(stderr, "cannot write %s\n", argv[3]);
        return 1;
    }
    return 0;
}
