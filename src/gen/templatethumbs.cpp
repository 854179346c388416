// Renders the thumbnail of every template page with the same web engine the editor shows it
// in, so a thumbnail always matches its page:
//   quillora-templatethumbs SOURCE_TEMPLATE_FOLDER OUTPUT_TEMPLATE_FOLDER
// For each SOURCE/<category>/<name>/<name>.html it writes OUTPUT/<category>/<name>.jpg.
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QTextStream>
#include <QTimer>
#include <QWebEngineSettings>
#include <QWebEngineView>

namespace {

constexpr int kPageWidth = 600;
constexpr int kPageHeight = 820;
constexpr int kThumbWidth = 220;

void wait(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

bool blank(const QImage& image) {
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); y += 7)
        for (int x = 0; x < image.width(); x += 7)
            if (image.pixel(x, y) != first)
                return false;
    return true;
}

// Loads the page and grabs it once two frames in a row agree and show something.
QImage render(QWebEngineView& view, const QString& page) {
    QEventLoop loop;
    bool ok = false;
    const auto c = QObject::connect(&view, &QWebEngineView::loadFinished, &loop, [&](bool done) {
        ok = done;
        loop.quit();
    });
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    view.load(QUrl::fromLocalFile(page));
    loop.exec();
    QObject::disconnect(c);
    if (!ok)
        return {};
    QImage previous;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 20000) {
        wait(150);
        const QImage shot = view.grab().toImage();
        if (!shot.isNull() && !blank(shot) && shot == previous)
            return shot;
        previous = shot;
    }
    return {};
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc != 3) {
        err << "usage: quillora-templatethumbs SOURCE_TEMPLATE_FOLDER OUTPUT_TEMPLATE_FOLDER\n";
        return 2;
    }
    const QDir source(QString::fromLocal8Bit(argv[1]));
    const QDir output(QString::fromLocal8Bit(argv[2]));
    QWebEngineView view;
    view.settings()->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
    view.settings()->setAttribute(QWebEngineSettings::ShowScrollBars, false);
    view.resize(kPageWidth, kPageHeight);
    view.show();
    int made = 0;
    int failed = 0;
    for (const QString& category :
         source.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QDir folder(source.filePath(category));
        for (const QString& name :
             folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            const QString page = folder.filePath(name + u'/' + name + QStringLiteral(".html"));
            if (!QFileInfo::exists(page))
                continue;
            const QImage shot = render(view, page);
            const QString target = output.filePath(category + u'/' + name + QStringLiteral(".jpg"));
            QDir().mkpath(QFileInfo(target).absolutePath());
            if (shot.isNull() || !shot.scaledToWidth(kThumbWidth, Qt::SmoothTransformation)
                                      .save(target, "JPG", 88)) {
                err << "cannot render " << page << '\n';
                ++failed;
                continue;
            }
            ++made;
        }
    }
    QTextStream(stdout) << made << " thumbnails in " << output.absolutePath() << '\n';
    return failed == 0 && made > 0 ? 0 : 1;
}
