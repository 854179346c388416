#include "gui/editor/VisualSurface.h"
#include "core/editor/DhtmlCommands.h"
#include "gui/PageProbe.h"

#include <QApplication>
#include <QColor>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEngineScript>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

// Readable failures: the text, not its bytes.
static void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

using namespace quillora;
using namespace quillora::gui;

namespace {

constexpr int kWaitMs = 20000;

// Waits for the next repaint request of a widget (the engine asks for one per new frame).
class RepaintWatch : public QObject {
public:
    explicit RepaintWatch(QWidget* widget) : m_widget(widget) { widget->installEventFilter(this); }
    ~RepaintWatch() override {
        if (m_widget)
            m_widget->removeEventFilter(this);
    }
    void wait(int timeoutMs = 2000) {
        QTimer::singleShot(timeoutMs, &m_loop, &QEventLoop::quit);
        m_loop.exec();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const QEvent::Type t = event->type();
        if (t == QEvent::Paint || t == QEvent::UpdateRequest || t == QEvent::UpdateLater)
            m_loop.quit();
        return QObject::eventFilter(watched, event);
    }

private:
    QPointer<QWidget> m_widget;
    QEventLoop m_loop;
};

QString page(const QString& body, const QString& head = QString()) {
    return QStringLiteral("<!DOCTYPE html>\r\n<html><head>") + head +
           QStringLiteral("</head><body>") + body + QStringLiteral("</body></html>");
}

QString bodyOf(const QString& html) {
    static const QRegularExpression re(QStringLiteral("<body[^>]*>(.*)</body>"),
                                       QRegularExpression::DotMatchesEverythingOption);
    return re.match(html).captured(1);
}

class VisualSurfaceTest : public testing::Test {
protected:
    std::unique_ptr<VisualSurface> make(bool editable) {
        auto s = std::make_unique<VisualSurface>(editable);
        s->resize(800, 600);
        s->show();
        return s;
    }

    bool load(VisualSurface& s, const QString& html, const QString& folder = QString()) {
        QSignalSpy complete(&s, &VisualSurface::documentComplete);
        if (!s.setDocumentHTML(html, folder.isEmpty() ? dir.path() : folder))
            return false;
        return complete.wait(kWaitMs);
    }

    QString read(VisualSurface& s) {
        const std::optional<QString> html = s.documentHTML(kWaitMs);
        EXPECT_TRUE(html.has_value());
        return html.value_or(QString());
    }

    // A script's answer, straight from the page's application world (not through the surface's
    // queue): for facts the document's HTML cannot tell, such as whether an image has loaded.
    static QVariant evaluate(VisualSurface& s, const QString& script) {
        const QVariant v = ::evaluate(&s, script, kWaitMs);
        EXPECT_TRUE(v.isValid()) << script.toStdString();
        return v;
    }
    // The natural width of every image of the page, in document order (0: not loaded).
    static QList<int> imageWidths(VisualSurface& s) {
        QList<int> widths;
        const QVariantList list =
            evaluate(s, QStringLiteral("Array.prototype.map.call(document.images, "
                                       "function (i) { return i.complete ? i.naturalWidth : 0; })"))
                .toList();
        for (const QVariant& v : list)
            widths << v.toInt();
        return widths;
    }

    // Waits until the mirror satisfies pred; false when it never does.
    template <typename Pred> bool stateUntil(VisualSurface& s, Pred pred) {
        QSignalSpy changed(&s, &VisualSurface::stateChanged);
        while (!pred(s.state())) {
            if (!changed.wait(kWaitMs))
                return pred(s.state());
        }
        return true;
    }

    static void click(VisualSurface& s, QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(s.focusProxy(), button, Qt::NoModifier, at);
    }
    // What a platform delivers for a double click or a bare move; QTest sends a lone double-click
    // event (leaving the button held) and moves only the cursor for a move without buttons.
    static void send(VisualSurface& s, QEvent::Type type, QPoint at, Qt::MouseButton button,
                     Qt::MouseButtons held) {
        QWidget* target = s.focusProxy();
        QMouseEvent e(type, QPointF(at), QPointF(target->mapToGlobal(at)), button, held,
                      Qt::NoModifier);
        QCoreApplication::sendEvent(target, &e);
    }
    static void doubleClick(VisualSurface& s, QPoint at) {
        send(s, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
        send(s, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
        send(s, QEvent::MouseButtonDblClick, at, Qt::LeftButton, Qt::LeftButton);
        send(s, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    }
    static void type(VisualSurface& s, const QString& text) {
        QTest::keyClicks(s.focusProxy(), text);
    }
    // The engine ignores input to a freshly replaced page until its first frame is on screen
    // (no user can click earlier); the first input of a test is repeated until it registers.
    static bool deliver(QSignalSpy& spy, const std::function<void()>& send) {
        const qsizetype before = spy.count();
        for (int attempt = 0; attempt < 20; ++attempt) {
            send();
            if (spy.count() > before || spy.wait(attempt == 19 ? kWaitMs : 1000))
                return true;
        }
        return false;
    }

    // Grabs the view until pred accepts the picture, waiting for the engine's next repaint of
    // its input widget between tries.
    static QImage grabWhen(VisualSurface& s, const std::function<bool(const QImage&)>& pred) {
        QImage shot = s.grab().toImage();
        for (int attempt = 0; attempt < 50 && !pred(shot); ++attempt) {
            RepaintWatch repaint(s.focusProxy());
            repaint.wait();
            shot = s.grab().toImage();
        }
        return shot;
    }

    QTemporaryDir dir;
};

// ---- Security baseline -------------------------------------------------------------------

class VisualSurfaceEitherPage : public VisualSurfaceTest,
                                public testing::WithParamInterface<bool> {};

TEST_P(VisualSurfaceEitherPage, MessageScriptsNeverRun) {
    const QString html =
        page(QStringLiteral("<p id=\"p\">Body</p>"
                            "<script>document.body.setAttribute('data-hacked', '1');</script>"),
             QStringLiteral("<title>Original</title>"
                            "<script>document.title = 'Hacked'; document.write('<i id=w>w</i>');"
                            "</script>"));
    auto s = make(GetParam());
    ASSERT_TRUE(load(*s, html));
    const QString back = read(*s);
    EXPECT_TRUE(back.contains(QLatin1String("<title>Original</title>"))) << back.toStdString();
    EXPECT_TRUE(back.contains(QLatin1String("</head><body><p id=\"p\">"))) << back.toStdString();
    EXPECT_FALSE(back.contains(QLatin1String("id=\"w\"")));
    EXPECT_EQ(s->page()->title(), QStringLiteral("Original"));
}

INSTANTIATE_TEST_SUITE_P(VisualSurface, VisualSurfaceEitherPage, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& info) {
                             return std::string(info.param ? "Visual" : "Preview");
                         });

TEST_F(VisualSurfaceTest, LinkClickInThePreviewIsReportedNotFollowed) {
    auto s = make(false);
    ASSERT_TRUE(load(
        *s, page(QStringLiteral("<a href=\"https://example.invalid/offer\" style=\"display:block;"
                                "width:300px;height:100px\">offer</a>"))));
    const QUrl document = s->documentUrl();
    QSignalSpy link(s.get(), &VisualSurface::linkClicked);
    ASSERT_TRUE(deliver(link, [&] { click(*s, QPoint(40, 40)); }));
    EXPECT_EQ(link.first().at(0).toUrl(), QUrl(QStringLiteral("https://example.invalid/offer")));
    EXPECT_TRUE(read(*s).contains(QLatin1String("offer</a>")));
    EXPECT_EQ(s->page()->url(), document);
}

TEST_F(VisualSurfaceTest, FilesAndAddressesDroppedFromOutsideInsertNothing) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p id=\"p\">Drop here</p>"))));
    const QString before = read(*s);
    s->placeCaret(QStringLiteral("#p"), 1);
    for (const QUrl& url : {QUrl::fromLocalFile(dir.filePath(QStringLiteral("photo.png"))),
                            QUrl(QStringLiteral("https://example.invalid/photo.png"))}) {
        QMimeData mime;
        mime.setUrls({url});
        mime.setText(QStringLiteral("dropped-text"));
        const QPoint at(20, 15);
        for (QWidget* target : {static_cast<QWidget*>(s.get()), s->focusProxy()}) {
            QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(target, &enter);
            QDragMoveEvent move(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(target, &move);
            QDropEvent drop(QPointF(at), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(target, &drop);
        }
        EXPECT_EQ(read(*s), before) << url.toString().toStdString();
    }
}

// ---- Whole document ----------------------------------------------------------------------

struct DoctypeCase {
    const char* name;
    const char* prolog; // everything before <html>
};

// Table rows print by name, so their test names stay the same from one build to the next.
void PrintTo(const DoctypeCase& c, std::ostream* os) {
    *os << c.name;
}

class VisualSurfaceDoctype : public VisualSurfaceTest,
                             public testing::WithParamInterface<DoctypeCase> {};

TEST_P(VisualSurfaceDoctype, SurvivesWriteAndRead) {
    const QString prolog = QString::fromUtf8(GetParam().prolog);
    const QString html = prolog + QStringLiteral("<html><head><title>t</title></head>"
                                                 "<body><p>x</p></body></html>");
    auto s = make(true);
    ASSERT_TRUE(load(*s, html));
    EXPECT_EQ(read(*s), html);
    // Each load replaces the page's file whole; nothing is left beside it.
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>short</p>"))));
    const QStringList files = QDir(dir.path()).entryList(QDir::Files | QDir::Hidden);
    ASSERT_EQ(files.size(), 1) << files.join(u' ').toStdString();
    QFile written(dir.filePath(files.front()));
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_TRUE(written.readAll().startsWith("\xEF\xBB\xBF<"));
}

INSTANTIATE_TEST_SUITE_P(
    VisualSurface, VisualSurfaceDoctype,
    testing::Values(
        DoctypeCase{"NewMessageSkeleton", "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\"\r\n"
                                          "    \"http://www.w3.org/TR/html4/strict.dtd\">\r\n"},
        DoctypeCase{"Html5LowerCase", "<!doctype html>\n"},
        DoctypeCase{"SystemOnlyNoBreak", "<!DOCTYPE html SYSTEM \"about:legacy-compat\">"},
        DoctypeCase{"None", ""}),
    [](const testing::TestParamInfo<DoctypeCase>& info) { return std::string(info.param.name); });

TEST_F(VisualSurfaceTest, ViewStyleSheetsNeverReachTheHtml) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<form><table><tr><td>a</td></tr></table></form>"
                                             "<p>x</p><a name=\"top\"></a>"))));
    const QString plain = read(*s);
    s->setShowBorders(true);
    s->setShowDetails(true);
    EXPECT_EQ(read(*s), plain);
    s->setShowBorders(false);
    s->setShowDetails(false);
    EXPECT_EQ(read(*s), plain);
    // The settings outlive a new document, still outside its HTML.
    s->setShowBorders(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<table><tr><td>b</td></tr></table>"))));
    EXPECT_EQ(bodyOf(read(*s)),
              QStringLiteral("<table><tbody><tr><td>b</td></tr></tbody></table>"));
}

TEST_F(VisualSurfaceTest, ThreeMegabyteDocumentLoadsAndReadsBack) {
    QString body;
    body.reserve(3'300'000);
    for (int i = 0; body.size() < 3'200'000; ++i)
        body += QStringLiteral("<p>Paragraph %1 of a long newsletter, with some text.</p>").arg(i);
    const QString html = page(body);
    auto s = make(true);
    ASSERT_TRUE(load(*s, html));
    EXPECT_EQ(read(*s), html);
}

TEST_F(VisualSurfaceTest, RelativeAndAbsoluteImagesResolve) {
    QImage red(40, 20, QImage::Format_RGB32);
    red.fill(Qt::red);
    ASSERT_TRUE(red.save(dir.filePath(QStringLiteral("red.png"))));
    QTemporaryDir elsewhere;
    QImage blue(40, 20, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    const QString bluePath = elsewhere.filePath(QStringLiteral("blue.png"));
    ASSERT_TRUE(blue.save(bluePath));
    auto s = make(false);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<img src=\"red.png\"><img src=\"%1\">").arg(bluePath),
                              QStringLiteral("<style>body{margin:0;background:#fff}img{display:"
                                             "block}</style>"))));
    EXPECT_EQ(imageWidths(*s), QList<int>({40, 40}));
    // Painting follows the load; a frame with both images is waited for, not assumed.
    const QImage shot = grabWhen(*s, [](const QImage& img) {
        return img.pixelColor(10, 10) == QColor(Qt::red) &&
               img.pixelColor(10, 30) == QColor(Qt::blue);
    });
    EXPECT_EQ(shot.pixelColor(10, 10), QColor(Qt::red));
    EXPECT_EQ(shot.pixelColor(10, 30), QColor(Qt::blue));
}

// ---- The blocking read --------------------------------------------------------------------

TEST_F(VisualSurfaceTest, BlockingReadRefusesToNest) {
    auto s = make(true);
    auto other = make(false);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>outer</p>"))));
    ASSERT_TRUE(load(*other, page(QStringLiteral("<p>other</p>"))));
    bool innerRan = false;
    std::optional<QString> inner = QStringLiteral("not called");
    std::optional<QString> innerOther = QStringLiteral("not called");
    QTimer::singleShot(0, [&] {
        innerRan = true;
        inner = s->documentHTML(1000);
        innerOther = other->documentHTML(1000);
    });
    const std::optional<QString> outer = s->documentHTML(kWaitMs);
    ASSERT_TRUE(innerRan);
    EXPECT_FALSE(inner.has_value());
    EXPECT_FALSE(innerOther.has_value());
    ASSERT_TRUE(outer.has_value());
    EXPECT_TRUE(outer->contains(QLatin1String("<p>outer</p>")));
    // Free again once the outer wait is over.
    EXPECT_TRUE(other->documentHTML(kWaitMs).has_value());
}

// A nested wait inside one of the engine's callbacks never gets its answer; the signals are
// therefore delivered from the event loop, where their handlers may read the document.
TEST_F(VisualSurfaceTest, HandlersOfThePagesSignalsMayReadTheDocument) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p id=\"a\">ab</p>"))));
    s->activateWindow();
    s->setFocus();
    std::optional<QString> fromState;
    QObject::connect(s.get(), &VisualSurface::stateChanged, s.get(), [&] {
        if (!fromState)
            fromState = s->documentHTML(kWaitMs);
    });
    s->placeCaret(QStringLiteral("#a"), 1);
    ASSERT_TRUE(stateUntil(*s, [](const SurfaceState& st) { return st.lastTag == "<P>"; }));
    ASSERT_TRUE(fromState.has_value());
    EXPECT_TRUE(fromState->contains(QLatin1String("<p id=\"a\">ab</p>")));

    std::optional<QString> fromEdited;
    QObject::connect(s.get(), &VisualSurface::edited, s.get(), [&] {
        if (!fromEdited)
            fromEdited = s->documentHTML(kWaitMs);
    });
    QSignalSpy edited(s.get(), &VisualSurface::edited);
    ASSERT_TRUE(deliver(edited, [&] { type(*s, QStringLiteral("x")); }));
    ASSERT_TRUE(fromEdited.has_value());
    EXPECT_TRUE(fromEdited->contains(QLatin1String("<p id=\"a\">abx</p>")));
    ASSERT_TRUE(
        stateUntil(*s, [](const SurfaceState& st) { return st.canUndo && st.changes > 0; }));
}

TEST_F(VisualSurfaceTest, BlockingReadTimesOutCleanly) {
    auto s = make(true);
    // No document yet: the read cannot be answered.
    EXPECT_FALSE(s->documentHTML(50).has_value());
    // The stale request is answered into nothing once a document arrives; reads work again.
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>later</p>"))));
    const std::optional<QString> html = s->documentHTML(kWaitMs);
    ASSERT_TRUE(html.has_value());
    EXPECT_TRUE(html->contains(QLatin1String("<p>later</p>")));
}

TEST_F(VisualSurfaceTest, UnwritableFolderKeepsTheCurrentDocument) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>kept</p>"))));
    QFile blocker(dir.filePath(QStringLiteral("not-a-folder")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    EXPECT_FALSE(s->setDocumentHTML(page(QStringLiteral("<p>lost</p>")), blocker.fileName()));
    EXPECT_TRUE(s->isReady());
    EXPECT_TRUE(read(*s).contains(QLatin1String("<p>kept</p>")));
}

// ---- Editing -----------------------------------------------------------------------------

TEST_F(VisualSurfaceTest, BoldOnASelectedWord) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>Hello <span id=\"w\">world</span></p>"))));
    s->selectContents(QStringLiteral("#w"));
    s->execCommand(DECMD_BOLD);
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<p>Hello <span id=\"w\"><b>world</b></span></p>"));
    ASSERT_TRUE(stateUntil(*s, [](const SurfaceState& st) { return st.bold && st.hasSelection; }));
}

struct FormatCase {
    const char* name;
    int decmd;
    QVariant argument;
    const char* expected; // the body afterwards
};

// Table rows print by name, so their test names stay the same from one build to the next.
void PrintTo(const FormatCase& c, std::ostream* os) {
    *os << c.name;
}

class VisualSurfaceFormat : public VisualSurfaceTest,
                            public testing::WithParamInterface<FormatCase> {};

TEST_P(VisualSurfaceFormat, ReachesTheSelection) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p id=\"w\">word</p>"))));
    s->selectContents(QStringLiteral("#w"));
    s->execCommand(GetParam().decmd, GetParam().argument);
    EXPECT_EQ(bodyOf(read(*s)), QString::fromUtf8(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    VisualSurface, VisualSurfaceFormat,
    testing::Values(
        FormatCase{"Italic", DECMD_ITALIC, {}, "<p id=\"w\"><i>word</i></p>"},
        FormatCase{"Underline", DECMD_UNDERLINE, {}, "<p id=\"w\"><u>word</u></p>"},
        FormatCase{"FontName", DECMD_SETFONTNAME, QStringLiteral("Arial"),
                   "<p id=\"w\"><font face=\"Arial\">word</font></p>"},
        FormatCase{"FontSize", DECMD_SETFONTSIZE, QStringLiteral("5"),
                   "<p id=\"w\"><font size=\"5\">word</font></p>"},
        FormatCase{"ColourAsQColor", DECMD_SETFORECOLOR, QColor(Qt::red),
                   "<p id=\"w\"><font color=\"#ff0000\">word</font></p>"},
        FormatCase{"ColourAsRgbNumber", DECMD_SETFORECOLOR, 0x996633, // red in the low byte
                   "<p id=\"w\"><font color=\"#336699\">word</font></p>"},
        FormatCase{"Hyperlink", DECMD_HYPERLINK, QStringLiteral("https://example.invalid/a?b=1&c"),
                   "<p id=\"w\"><a href=\"https://example.invalid/a?b=1&amp;c\">word</a></p>"},
        FormatCase{"NumberedList", DECMD_ORDERLIST, {}, "<p id=\"w\"><ol><li>word</li></ol></p>"},
        FormatCase{"Centre",
                   DECMD_JUSTIFYCENTER,
                   {},
                   "<p id=\"w\" style=\"text-align: center;\">word</p>"}),
    [](const testing::TestParamInfo<FormatCase>& info) { return std::string(info.param.name); });

TEST_F(VisualSurfaceTest, BrowserActionsKeepTheirPlaceInTheQueue) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p id=\"a\">one</p><p>two</p>"))));
    // The caret move, select all, bold and undo must land in this order.
    s->placeCaret(QStringLiteral("#a"), 0);
    s->execCommand(DECMD_SELECTALL);
    s->execCommand(DECMD_BOLD);
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<p id=\"a\"><b>one</b></p><p><b>two</b></p>"));
    s->execCommand(DECMD_UNDO);
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<p id=\"a\">one</p><p>two</p>"));
    s->execCommand(DECMD_REDO);
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<p id=\"a\"><b>one</b></p><p><b>two</b></p>"));
}

TEST_F(VisualSurfaceTest, InsertHtmlLandsAtTheCaret) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p id=\"a\">Hello</p><p id=\"b\">World</p>"))));
    // Before the user has placed a caret: the start of the body.
    s->insertHtml(QStringLiteral("<br>"));
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<br><p id=\"a\">Hello</p><p id=\"b\">World</p>"));
    s->placeCaret(QStringLiteral("#a"), 1);
    s->insertHtml(QStringLiteral(":::nom:::"));
    EXPECT_EQ(bodyOf(read(*s)),
              QStringLiteral("<br><p id=\"a\">Hello:::nom:::</p><p id=\"b\">World</p>"));
    s->placeCaret(QStringLiteral("body"), 2);
    s->insertHtml(QStringLiteral("<hr>"));
    EXPECT_EQ(bodyOf(read(*s)),
              QStringLiteral("<br><p id=\"a\">Hello:::nom:::</p><hr><p id=\"b\">World</p>"));
}

TEST_F(VisualSurfaceTest, InsertHtmlOutsideTheBodyOrInThePreviewDoesNothing) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>Body</p>"), QStringLiteral("<title>T</title>"))));
    const QString before = read(*s);
    for (const char* outside : {"title", "head", "html"}) {
        s->placeCaret(QString::fromLatin1(outside), 0);
        s->insertHtml(QStringLiteral("<hr>:::nom:::"));
        EXPECT_EQ(read(*s), before) << outside;
    }
    auto preview = make(false);
    ASSERT_TRUE(load(*preview, page(QStringLiteral("<p id=\"p\">Body</p>"))));
    const QString previewBefore = read(*preview);
    preview->placeCaret(QStringLiteral("#p"), 1);
    preview->insertHtml(QStringLiteral("<hr>"));
    preview->execCommand(DECMD_BOLD);
    EXPECT_EQ(read(*preview), previewBefore);
}

// Before the user has placed a caret, a typing style goes to the start of the body, where
// the page shows its insertion point: the document is untouched until something is typed.
TEST_F(VisualSurfaceTest, FontNameBeforeAnyCaretStylesWhatIsTypedFirst) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>Hello</p>"))));
    const QString before = read(*s);
    s->execCommand(DECMD_SETFONTNAME, QStringLiteral("Verdana"));
    EXPECT_EQ(read(*s), before);
    s->activateWindow();
    s->setFocus();
    QSignalSpy edited(s.get(), &VisualSurface::edited);
    ASSERT_TRUE(deliver(edited, [&] { type(*s, QStringLiteral("x")); }));
    EXPECT_TRUE(bodyOf(read(*s)).startsWith(QLatin1String("<p><font face=\"Verdana\">x")))
        << read(*s).toStdString();
}

// Every command name the surface hands to the page's execCommand is one the page knows.
TEST_F(VisualSurfaceTest, ThePageSupportsEveryCommandNameOfTheTable) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>x</p>"))));
    for (const DhtmlCommand& c : dhtmlCommands()) {
        if (c.kind != DhtmlKind::Command && c.kind != DhtmlKind::CommandWithText &&
            c.kind != DhtmlKind::CommandWithColour && c.kind != DhtmlKind::CommandWithAddress)
            continue;
        EXPECT_EQ(evaluate(*s, QStringLiteral("document.queryCommandSupported('%1')")
                                   .arg(QLatin1String(c.name))),
                  QVariant(true))
            << c.name;
    }
}

// ---- Tables ------------------------------------------------------------------------------

struct TableCase {
    const char* name;
    int decmd;
    const char* caretIn;
    const char* expected; // the table's rows afterwards
};

// Table rows print by name, so their test names stay the same from one build to the next.
void PrintTo(const TableCase& c, std::ostream* os) {
    *os << c.name;
}

class VisualSurfaceTable : public VisualSurfaceTest,
                           public testing::WithParamInterface<TableCase> {};

// Each edit is one step of the page's undo, which gives back the document to the byte.
TEST_P(VisualSurfaceTable, EditsTheTableAtTheCaretInOneUndoStep) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<table><tbody>"
                                             "<tr><td id=\"a\">a</td><td id=\"b\">b</td></tr>"
                                             "<tr><td id=\"c\">c</td><td id=\"d\">d</td></tr>"
                                             "</tbody></table><p id=\"out\">out</p>"))));
    const QString before = read(*s);
    s->placeCaret(QString::fromLatin1(GetParam().caretIn), 0);
    s->execCommand(GetParam().decmd);
    const QString expected = QString::fromLatin1(GetParam().expected);
    const QString table = expected.isEmpty() ? QString()
                                             : QStringLiteral("<table><tbody>") + expected +
                                                   QStringLiteral("</tbody></table>");
    const QString after = read(*s);
    EXPECT_EQ(bodyOf(after), table + QStringLiteral("<p id=\"out\">out</p>"));
    s->execCommand(DECMD_UNDO);
    EXPECT_EQ(read(*s), before);
    s->execCommand(DECMD_REDO);
    EXPECT_EQ(read(*s), after);
}

INSTANTIATE_TEST_SUITE_P(
    VisualSurface, VisualSurfaceTable,
    testing::Values(TableCase{"InsertRowAfterTheFirst", DECMD_INSERTROW, "#a",
                              "<tr><td id=\"a\">a</td><td id=\"b\">b</td></tr>"
                              "<tr><td><br></td><td><br></td></tr>"
                              "<tr><td id=\"c\">c</td><td id=\"d\">d</td></tr>"},
                    TableCase{"InsertRowAfterTheLast", DECMD_INSERTROW, "#d",
                              "<tr><td id=\"a\">a</td><td id=\"b\">b</td></tr>"
                              "<tr><td id=\"c\">c</td><td id=\"d\">d</td></tr>"
                              "<tr><td><br></td><td><br></td></tr>"},
                    TableCase{"InsertColumnAfterTheFirst", DECMD_INSERTCOL, "#c",
                              "<tr><td id=\"a\">a</td><td><br></td><td id=\"b\">b</td></tr>"
                              "<tr><td id=\"c\">c</td><td><br></td><td id=\"d\">d</td></tr>"},
                    TableCase{"InsertColumnAtTheEnd", DECMD_INSERTCOL, "#b",
                              "<tr><td id=\"a\">a</td><td id=\"b\">b</td><td><br></td></tr>"
                              "<tr><td id=\"c\">c</td><td id=\"d\">d</td><td><br></td></tr>"},
                    TableCase{"DeleteTheSecondRow", DECMD_DELETEROWS, "#d",
                              "<tr><td id=\"a\">a</td><td id=\"b\">b</td></tr>"},
                    TableCase{"DeleteTheFirstColumn", DECMD_DELETECOLS, "#a",
                              "<tr><td id=\"b\">b</td></tr><tr><td id=\"d\">d</td></tr>"},
                    TableCase{"CaretOutsideAnyTable", DECMD_INSERTROW, "#out",
                              "<tr><td id=\"a\">a</td><td id=\"b\">b</td></tr>"
                              "<tr><td id=\"c\">c</td><td id=\"d\">d</td></tr>"}),
    [](const testing::TestParamInfo<TableCase>& info) { return std::string(info.param.name); });

class VisualSurfaceNewsletterTable : public VisualSurfaceTest,
                                     public testing::WithParamInterface<const char*> {};

// Real newsletters nest tables in cells, between whitespace, inside links and wrappers that the
// page would tidy away if it were left to itself: only the edited table may change.
TEST_P(VisualSurfaceNewsletterTable, ARowInsertedChangesOnlyItsTable) {
    QFile index(QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/%1/index.html")
                    .arg(QLatin1String(GetParam())));
    ASSERT_TRUE(index.open(QIODevice::ReadOnly));
    auto s = make(true);
    ASSERT_TRUE(load(*s, QString::fromUtf8(index.readAll())));
    const QString selector = QStringLiteral("table table td");
    const QString tableOf =
        QStringLiteral("document.querySelector('%1').closest('table').outerHTML").arg(selector);
    const QString before = read(*s);
    const QString oldTable = evaluate(*s, tableOf).toString();
    ASSERT_EQ(before.count(oldTable), 1);
    s->placeCaret(selector, 0);
    s->execCommand(DECMD_INSERTROW);
    const QString after = read(*s);
    const QString newTable = evaluate(*s, tableOf).toString();
    EXPECT_EQ(newTable.count(QLatin1String("<tr")), oldTable.count(QLatin1String("<tr")) + 1);
    EXPECT_EQ(after, QString(before).replace(oldTable, newTable));
    s->execCommand(DECMD_UNDO);
    EXPECT_EQ(read(*s), before);
    s->execCommand(DECMD_REDO);
    EXPECT_EQ(read(*s), after);
}

INSTANTIATE_TEST_SUITE_P(VisualSurface, VisualSurfaceNewsletterTable,
                         testing::Values("cerberus-hybrid", "colorlib-16", "colorlib-legacy-12",
                                         "leemunroe-responsive-email", "mailchimp-fancy-1-2-3",
                                         "philwareham-responsive-email",
                                         "postmark-basic-full-example",
                                         "sendgrid-merriweather-welcome",
                                         "sendwithus-goldstar-confirm",
                                         "sendwithus-oxygen-welcome"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

struct TableRemovalCase {
    const char* name;
    const char* after;    // what follows the table
    const char* expected; // the body once its rows are gone
};

// Table rows print by name, so their test names stay the same from one build to the next.
void PrintTo(const TableRemovalCase& c, std::ostream* os) {
    *os << c.name;
}

class VisualSurfaceTableRemoval : public VisualSurfaceTest,
                                  public testing::WithParamInterface<TableRemovalCase> {};

TEST_P(VisualSurfaceTableRemoval, DeletingEveryRowRemovesTheTable) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>x</p><table><tr><td id=\"a\">a</td></tr>"
                                             "<tr><td id=\"b\">b</td></tr></table>") +
                              QString::fromLatin1(GetParam().after))));
    const QString before = read(*s);
    s->placeCaret(QStringLiteral("#a"), 0);
    s->execCommand(DECMD_DELETEROWS);
    s->execCommand(DECMD_DELETEROWS); // the caret moved to the remaining row
    EXPECT_EQ(bodyOf(read(*s)), QString::fromLatin1(GetParam().expected));
    s->execCommand(DECMD_UNDO);
    s->execCommand(DECMD_UNDO);
    EXPECT_EQ(read(*s), before);
}

INSTANTIATE_TEST_SUITE_P(VisualSurface, VisualSurfaceTableRemoval,
                         testing::Values(TableRemovalCase{"BeforeAParagraph", "<p>out</p>",
                                                          "<p>x</p><p>out</p>"},
                                         TableRemovalCase{"AtTheEndOfTheBody", "", "<p>x</p>"}),
                         [](const testing::TestParamInfo<TableRemovalCase>& info) {
                             return std::string(info.param.name);
                         });

// ---- The mirror --------------------------------------------------------------------------

struct CaretCase {
    std::string name;
    QString body;
    QString selector;
    int offset; // the caret's child offset; -1 selects the element's contents
    QString tagPath;
    QString tagName;
    int id;
};

void PrintTo(const CaretCase& c, std::ostream* os) {
    *os << c.name;
}

class VisualSurfaceCaret : public VisualSurfaceTest,
                           public testing::WithParamInterface<CaretCase> {};

TEST_P(VisualSurfaceCaret, TheMirrorFollows) {
    const CaretCase& c = GetParam();
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(c.body)));
    if (c.offset < 0)
        s->selectContents(c.selector);
    else
        s->placeCaret(c.selector, c.offset);
    const QString last = c.tagPath.mid(c.tagPath.lastIndexOf(u'<'));
    ASSERT_TRUE(stateUntil(*s, [&](const SurfaceState& st) { return st.lastTag == last; }));
    EXPECT_EQ(s->state().tagPath.join(QString()), c.tagPath);
    EXPECT_EQ(s->state().currentTagName, c.tagName);
    EXPECT_EQ(s->state().currentId, c.id);
    EXPECT_EQ(s->state().hasSelection, c.offset < 0);
}

std::vector<CaretCase> caretCases() {
    const QString cell = QStringLiteral("<table><tr><td id=\"42\">cell</td></tr></table>");
    QString nested;
    for (int i = 0; i < 20; ++i)
        nested += QStringLiteral("<div>");
    nested += QStringLiteral("<span id=\"deep\">deep</span>");
    for (int i = 0; i < 20; ++i)
        nested += QStringLiteral("</div>");
    return {
        {"InATableCell", cell, "td", 1, "<HTML><BODY><TABLE><TBODY><TR><TD>", "TD", 42},
        {"StraightInTheBody", cell, "body", 0, "<HTML><BODY>", "BODY", 0},
        {"SixteenInnermostLevels", nested, "#deep", 1,
         QStringLiteral("<DIV>").repeated(15) + QStringLiteral("<SPAN>"), "SPAN", 0},
        {"ASelectedImageIsTheElement",
         QStringLiteral("<p><img id=\"7\" src=\"none.png\" alt=\"\"></p>"), "p", -1,
         "<HTML><BODY><P><IMG>", "IMG", 7},
    };
}

INSTANTIATE_TEST_SUITE_P(VisualSurface, VisualSurfaceCaret, testing::ValuesIn(caretCases()),
                         [](const testing::TestParamInfo<CaretCase>& info) {
                             return info.param.name;
                         });

TEST_F(VisualSurfaceTest, FontAndColourQueriesAnswerThroughTheMirror) {
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p><font id=\"f\" face=\"Verdana\" size=\"5\" "
                                             "color=\"#336699\">text</font></p>"))));
    s->placeCaret(QStringLiteral("#f"), 1);
    s->execCommand(DECMD_GETFONTNAME);
    ASSERT_TRUE(stateUntil(*s, [](const SurfaceState& st) { return st.lastTag == "<FONT>"; }));
    EXPECT_EQ(s->state().fontName, QStringLiteral("Verdana"));
    EXPECT_EQ(s->state().fontSize, QStringLiteral("5"));
    EXPECT_EQ(s->state().foreColor, QStringLiteral("#336699"));
}

// ---- Pointer events ----------------------------------------------------------------------

TEST_F(VisualSurfaceTest, PointerEventsOnAnImage) {
    QImage picture(200, 100, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    ASSERT_TRUE(picture.save(dir.filePath(QStringLiteral("pic.png"))));
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p><img id=\"i\" src=\"pic.png\" "
                                             "style=\"width:120px;height:60px\"></p>"),
                              QStringLiteral("<style>body{margin:0}p{margin:0}</style>"))));
    QSignalSpy clicked(s.get(), &VisualSurface::clicked);
    QSignalSpy leftUp(s.get(), &VisualSurface::leftMouseUp);
    ASSERT_TRUE(deliver(leftUp, [&] { click(*s, QPoint(30, 30)); }));
    ASSERT_TRUE(clicked.count() > 0 || clicked.wait(kWaitMs));
    EXPECT_EQ(bodyOf(read(*s)), QStringLiteral("<p><img id=\"i\" src=\"pic.png\" "
                                               "style=\"width:120px;height:60px\" width=\"120\" "
                                               "height=\"60\"></p>"))
        << read(*s).toStdString();

    // Elsewhere on the image, so the engine's click count starts afresh.
    QSignalSpy doubled(s.get(), &VisualSurface::imageDoubleClicked);
    const QPoint twice(90, 40);
    doubleClick(*s, twice);
    EXPECT_TRUE(doubled.count() > 0 || doubled.wait(kWaitMs));

    QSignalSpy menu(s.get(), &VisualSurface::contextMenuAt);
    click(*s, QPoint(50, 40), Qt::RightButton);
    ASSERT_TRUE(menu.count() > 0 || menu.wait(kWaitMs));
    EXPECT_EQ(menu.takeFirst().at(0).toPoint(), s->mapToGlobal(QPoint(50, 40)));

    QSignalSpy moved(s.get(), &VisualSurface::mouseMoved);
    send(*s, QEvent::MouseMove, QPoint(70, 45), Qt::NoButton, Qt::NoButton);
    const auto reported = [&] {
        return !moved.isEmpty() && moved.last().at(0).toInt() == 70 &&
               moved.last().at(1).toInt() == 45;
    };
    while (!reported() && moved.wait(kWaitMs)) {
    }
    EXPECT_TRUE(reported());
}

TEST_F(VisualSurfaceTest, AnImageSizedByAClickIsOneUndoStep) {
    QImage picture(200, 100, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    ASSERT_TRUE(picture.save(dir.filePath(QStringLiteral("pic.png"))));
    auto s = make(true);
    ASSERT_TRUE(load(*s, page(QStringLiteral("<p>a<img id=\"i\" src=\"pic.png\" "
                                             "style=\"width:120px;height:60px\" alt=\"\">b</p>"),
                              QStringLiteral("<style>body{margin:0}p{margin:0}</style>"))));
    const QString before = read(*s);
    QSignalSpy leftUp(s.get(), &VisualSurface::leftMouseUp);
    ASSERT_TRUE(deliver(leftUp, [&] { click(*s, QPoint(40, 30)); }));
    const QString after = read(*s);
    EXPECT_EQ(bodyOf(after), QStringLiteral("<p>a<img id=\"i\" src=\"pic.png\" "
                                            "style=\"width:120px;height:60px\" alt=\"\" "
                                            "width=\"120\" height=\"60\">b</p>"));
    // The click leaves the image selected, as the property grid expects.
    ASSERT_TRUE(stateUntil(*s, [](const SurfaceState& st) { return st.lastTag == "<IMG>"; }));
    s->execCommand(DECMD_UNDO);
    EXPECT_EQ(read(*s), before);
    s->execCommand(DECMD_REDO);
    EXPECT_EQ(read(*s), after);
}

TEST_F(VisualSurfaceTest, AClickFindsTheMirrorAlreadyAtTheCaret) {
    auto s = make(true);
    ASSERT_TRUE(
        load(*s, page(QStringLiteral("<table><tr>"
                                     "<td id=\"1\" style=\"width:300px;height:80px\">one</td>"
                                     "<td id=\"2\" style=\"width:300px;height:80px\">two</td>"
                                     "</tr></table>"),
                      QStringLiteral("<style>body{margin:0}</style>"))));
    QSignalSpy clicked(s.get(), &VisualSurface::clicked);
    ASSERT_TRUE(deliver(clicked, [&] { click(*s, QPoint(40, 40)); }));
    int idSeen = 0;
    QStringList pathSeen;
    QObject::connect(s.get(), &VisualSurface::clicked, s.get(), [&] {
        idSeen = s->state().currentId;
        pathSeen = s->state().tagPath;
    });
    click(*s, QPoint(340, 40));
    while (idSeen != 2 && clicked.wait(kWaitMs)) {
    }
    EXPECT_EQ(idSeen, 2);
    EXPECT_EQ(pathSeen, QStringList({"<HTML>", "<BODY>", "<TABLE>", "<TBODY>", "<TR>", "<TD>"}));
}

// ---- A real newsletter, for the eye ------------------------------------------------------

TEST_F(VisualSurfaceTest, NewsletterScreenshots) {
    const QString source = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/colorlib-16");
    QFile index(source + QStringLiteral("/index.html"));
    ASSERT_TRUE(index.open(QIODevice::ReadOnly));
    const QString html = QString::fromUtf8(index.readAll());
    // A work folder of our own with copies of the images, as the editor's restore folder has.
    const QString work = dir.filePath(QStringLiteral("work"));
    ASSERT_TRUE(QDir().mkpath(work + QStringLiteral("/images")));
    const QDir images(source + QStringLiteral("/images"));
    for (const QString& name : images.entryList(QDir::Files))
        ASSERT_TRUE(QFile::copy(images.filePath(name), work + QStringLiteral("/images/") + name));

    auto visual = make(true);
    auto preview = make(false);
    visual->resize(900, 1100);
    preview->resize(900, 1100);
    visual->setShowBorders(true);
    ASSERT_TRUE(load(*visual, html, work));
    ASSERT_TRUE(load(*preview, html, work));
    // The text survives the page untouched by our view sheets.
    EXPECT_TRUE(read(*visual).contains(QLatin1String("src=\"images/bg_1.jpg\"")));

    // What the pictures are for: both pages show the newsletter with every image loaded.
    const qsizetype imageTags = html.count(QLatin1String("<img"));
    ASSERT_GE(imageTags, 8);
    for (VisualSurface* s : {visual.get(), preview.get()}) {
        const QList<int> widths = imageWidths(*s);
        EXPECT_EQ(widths.size(), imageTags);
        EXPECT_FALSE(widths.contains(0)) << s->isEditable();
    }

    const QString shots = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
    ASSERT_TRUE(QDir().mkpath(shots));
    // Frames are waited for, not assumed: the preview until it shows the page, the visual page
    // until its borders are drawn, which is all that tells the two apart.
    const QImage previewShot = grabWhen(*preview, [](const QImage& img) {
        return img.pixelColor(img.width() / 2, 200) != img.pixelColor(0, 0);
    });
    const QImage visualShot =
        grabWhen(*visual, [&](const QImage& img) { return img != previewShot; });
    EXPECT_NE(visualShot, previewShot);
    // A photograph is drawn where the page put it: a flat background has a few colours.
    const QVariantList box =
        evaluate(*preview, QStringLiteral("(function () { var r = document.querySelector("
                                          "'img[alt=\"Kris Stanner\"]').getBoundingClientRect();"
                                          " return [r.left, r.top, r.width, r.height]; })()"))
            .toList();
    ASSERT_EQ(box.size(), 4);
    const QRect photo = QRect(box[0].toInt(), box[1].toInt(), box[2].toInt(), box[3].toInt())
                            .intersected(previewShot.rect());
    ASSERT_GT(photo.width() * photo.height(), 10000);
    QSet<QRgb> colours;
    for (int y = photo.top(); y <= photo.bottom(); y += 2) {
        for (int x = photo.left(); x <= photo.right(); x += 2)
            colours.insert(previewShot.pixel(x, y));
    }
    EXPECT_GT(colours.size(), 100);
    EXPECT_TRUE(previewShot.save(shots + QStringLiteral("/preview-surface.png")));
    EXPECT_TRUE(visualShot.save(shots + QStringLiteral("/visual-surface.png")));
}

} // namespace
