// Start-up to an editable document, next to a bare web view loading the same page, and a
// visual -> source -> visual round trip on a 1 MB newsletter, with the source left as it was
// and with one character typed in it, next to a bare web view loading the same 1 MB page.
//
// Each start is measured in a fresh process (the web engine's first start dominates), in
// alternating order; the medians of fifteen are printed, with the median of the ratios of each
// editor start to the bare start just before it, which the machine's slower and faster spells
// touch alike.
#include "core/app/Folders.h"
#include "core/app/Provisioning.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/message/MessageDocument.h"
#include "gui/app/ProgramIcon.h"
#include "gui/app/Session.h"
#include "gui/editor/SourceView.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QWebEngineView>
#include <algorithm>
#include <cstdio>

using namespace quillora;
using namespace quillora::gui;

namespace {

bool waitFor(QObject* sender, const char* signal, int ms = 60000) {
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, SLOT(quit()));
    QTimer::singleShot(ms, &loop, [&loop] { loop.exit(1); });
    return loop.exec() == 0;
}

// The program's folder in `root` holds the program's language and links files, as an installed
// program's folder does; the data folder is provisioned beside it.
void prepareSession(const QString& root) {
    Session& s = session();
    s.currentLanguage = QStringLiteral("English");
    s.folders = Folders::derive(root + QStringLiteral("/app"), root + QStringLiteral("/docs"));
    QDir().mkpath(s.folders.appPath);
    for (const char* name : {"LANG_Quillora.lng", "Links.dll"}) {
        const QString target = s.folders.appPath + QLatin1String(name);
        if (!QFileInfo::exists(target))
            QFile::copy(QStringLiteral(QUILLORA_SOURCE_DIR "/data/") + QLatin1String(name), target);
    }
    Provisioning::ensureDataFolders(s.folders, QStringLiteral(QUILLORA_SOURCE_DIR "/data/defaults"),
                                    "en_US");
    bError::InitError(s.folders);
}

// One start, in this process; prints the milliseconds. The editor starts on the data folder
// the parent provisioned and with the icon pictures its first start kept in the user's cache,
// as every start after the first does.
int startOnce(const QString& mode, const QString& dataRoot, QElapsedTimer& clock) {
    QTemporaryDir dir;
    if (mode == QLatin1String("bare")) {
        const QString page = dir.filePath("page.html");
        TextFile::writeText(page, NewMessageSkeleton());
        QWebEngineView view;
        view.resize(1000, 700);
        view.show();
        view.load(QUrl::fromLocalFile(page));
        if (!waitFor(&view, SIGNAL(loadFinished(bool))))
            return 1;
    } else {
        prepareSession(dataRoot);
        frmMain window;
        window.Form_Load(QString());
        window.show();
        if (!waitFor(&window, SIGNAL(documentLoaded())))
            return 1;
    }
    std::printf("%lld\n", static_cast<long long>(clock.elapsed()));
    return 0;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

int switchPages() {
    QTemporaryDir dir;
    prepareSession(dir.path());
    frmMain window;
    window.Form_Load(QString());
    window.resize(1200, 800);
    window.show();
    waitFor(&window, SIGNAL(documentLoaded()));

    // About 1 MB: a real newsletter's body repeated inside one document.
    const QString page = TextFile::read(QStringLiteral(QUILLORA_SOURCE_DIR
                                                       "/tests/data/html/colorlib-16/index.html"))
                             .text;
    const qsizetype bodyStart = page.indexOf(QLatin1String("<body"));
    const qsizetype bodyEnd = page.lastIndexOf(QLatin1String("</body>"));
    const QString inner = page.mid(page.indexOf(u'>', bodyStart) + 1, bodyEnd - bodyStart);
    QString big = page.left(page.indexOf(u'>', bodyStart) + 1);
    while (big.size() < 1024 * 1024)
        big += inner;
    big += QStringLiteral("</body></html>");
    window.visualPage()->setDocumentHTML(big, dir.path() + u'/');
    waitFor(window.visualPage(), SIGNAL(documentComplete()));

    // The switch is over when the visual page is editable again: at once when it kept its
    // document, after its load otherwise. The typed character goes into a text in the middle of
    // the body, as a user's correction would; a changed title is a change of the head, which
    // the page cannot take without loading the document again.
    enum class Edit { None, Body, Head };
    const auto roundTrip = [&](Edit edit) {
        QElapsedTimer t;
        t.start();
        window.tabs()->setCurrentIndex(frmMain::PageSource);
        SourceView* source = window.sourcePage();
        if (edit != Edit::None) {
            const QString text = source->text();
            const QLatin1String anchor(edit == Edit::Body ? "</td>" : "</title>");
            const qsizetype at =
                edit == Edit::Body ? text.indexOf(anchor, text.size() / 2) : text.indexOf(anchor);
            // Scintilla counts in bytes of UTF-8.
            source->SendScintilla(QsciScintillaBase::SCI_INSERTTEXT,
                                  static_cast<unsigned long>(text.left(at).toUtf8().size()), "x");
        }
        window.tabs()->setCurrentIndex(frmMain::PageVisual);
        if (!window.visualPage()->isReady())
            waitFor(window.visualPage(), SIGNAL(documentComplete()));
        return double(t.elapsed());
    };
    std::vector<double> unchanged, edited, head, bare;
    QWebEngineView view;
    view.resize(1200, 800);
    view.show();
    const QString file = dir.filePath(QStringLiteral("big.html"));
    TextFile::writeText(file, big);
    for (int i = 0; i < 5; ++i) {
        unchanged.push_back(roundTrip(Edit::None));
        edited.push_back(roundTrip(Edit::Body));
        head.push_back(roundTrip(Edit::Head));
        QElapsedTimer t;
        t.start();
        view.load(QUrl::fromLocalFile(file));
        waitFor(&view, SIGNAL(loadFinished(bool)));
        bare.push_back(double(t.elapsed()));
    }
    if (!window.visualPage()->documentHTML().value_or(QString()).contains(
            QLatin1String("x</td>"))) {
        std::fprintf(stderr, "the typed characters did not reach the visual page\n");
        return 1;
    }
    const double mb = double(big.toUtf8().size()) / 1e6;
    std::printf("visual -> source -> visual on %.2f MB, source unchanged: median %.0f ms\n", mb,
                median(unchanged));
    std::printf("visual -> source -> visual on %.2f MB, one character typed in the body: median "
                "%.0f ms; bare web view loading the same page: %.0f ms\n",
                mb, median(edited), median(bare));
    std::printf("visual -> source -> visual on %.2f MB, the title changed (page loaded again): "
                "median %.0f ms\n",
                mb, median(head));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QElapsedTimer clock;
    clock.start();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    // As the program starts: its own settings rather than the desktop's, and its icon theme.
    QApplication::setDesktopSettingsAware(false);
    QApplication app(argc, argv);
    useIconTheme();
    const QStringList args = QApplication::arguments();
    if (args.size() > 2 && (args[1] == QLatin1String("bare") || args[1] == QLatin1String("editor")))
        return startOnce(args[1], args[2], clock);
    if (args.size() > 1 && args[1] == QLatin1String("switch"))
        return switchPages();

    QTemporaryDir data;
    prepareSession(data.path());
    std::vector<double> bare, editor;
    for (int i = 0; i < 15; ++i) {
        for (const char* mode : {"bare", "editor"}) {
            QProcess p;
            p.start(QApplication::applicationFilePath(), {QString::fromLatin1(mode), data.path()});
            p.waitForFinished(120000);
            const double ms = QString::fromLatin1(p.readAllStandardOutput()).trimmed().toDouble();
            (QLatin1String(mode) == QLatin1String("bare") ? bare : editor).push_back(ms);
        }
    }
    std::vector<double> ratios;
    for (size_t i = 0; i < bare.size(); ++i)
        ratios.push_back(bare[i] > 0 ? editor[i] / bare[i] : 0.0);
    const double b = median(bare), e = median(editor);
    std::printf("start-up to an editable document: %.0f ms; bare web view loading the same page: "
                "%.0f ms; ratio of the medians %.2fx, median of the paired ratios %.2fx\n",
                e, b, b > 0 ? e / b : 0.0, median(ratios));
    QProcess sw;
    sw.start(QApplication::applicationFilePath(), {QStringLiteral("switch")});
    sw.waitForFinished(300000);
    std::fputs(sw.readAllStandardOutput().constData(), stdout);
    return 0;
}
