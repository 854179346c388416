#include "core/app/Folders.h"
#include "core/app/Links.h"
#include "gui/ScriptedDialogs.h"
#include "gui/app/AboutPanel.h"
#include "gui/app/Session.h"
#include "gui/app/frmInfoSu.h"
#include "gui/app/frmSplash.h"

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QProgressBar>
#include <gtest/gtest.h>

using namespace quillora;
using namespace quillora::gui;

namespace {

void click(QWidget* w, QPoint at = QPoint(3, 3)) {
    const QPointF global = w->mapToGlobal(QPointF(at));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(at), global, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(w, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(at), global, Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(w, &release);
}

void key(QWidget* w, int k) {
    QKeyEvent press(QEvent::KeyPress, k, Qt::NoModifier);
    QApplication::sendEvent(w, &press);
}

void saveShot(QWidget& w, const QString& name) {
    const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
    QDir().mkpath(folder);
    EXPECT_TRUE(w.grab().save(folder + "/" + name));
}

class AboutTest : public testing::Test {
protected:
    void SetUp() override {
        Session& s = session();
        s = Session{};
        s.folders = Folders::derive(QStringLiteral(QUILLORA_SOURCE_DIR "/data/"), QDir::tempPath());
        s.currentLanguage = "Italiano";
        scriptDialogs();
    }
    void TearDown() override { session() = Session{}; }
    const QStringList& opened() const { return scripted().opened; }
};

TEST_F(AboutTest, VersionHasTwoDigitMinorInBothWindows) {
    const QString expected = QStringLiteral("%1.%2")
                                 .arg(QUILLORA_VERSION_MAJOR)
                                 .arg(QUILLORA_VERSION_MINOR, 2, 10, QLatin1Char('0'));
    frmInfoSu about;
    frmSplash splash;
    EXPECT_EQ(about.findChild<QLabel*>("lblVersion")->text(), expected);
    EXPECT_EQ(splash.findChild<QLabel*>("lblVersion")->text(), expected);
}

TEST_F(AboutTest, EscapeHidesEnterDoesNotAndClosingOnlyHides) {
    frmInfoSu about;
    about.show();
    key(&about, Qt::Key_Return);
    key(&about, Qt::Key_Enter);
    key(&about, Qt::Key_Space);
    EXPECT_TRUE(about.isVisible());
    key(&about, Qt::Key_Escape);
    EXPECT_FALSE(about.isVisible());

    about.show();
    EXPECT_FALSE(about.close());
    EXPECT_FALSE(about.isVisible());
    // Still there to be shown again.
    about.show();
    EXPECT_TRUE(about.isVisible());
}

TEST_F(AboutTest, ClicksOnBackgroundPictureAndVersionHideButLinksDoNot) {
    frmInfoSu about;
    for (const char* hides : {"Image1", "lblVersion", "frmInfoSu"}) {
        about.show();
        click(about.findChild<QLabel*>("Link"));
        click(about.findChild<QLabel*>("MailTo"));
        EXPECT_TRUE(about.isVisible()) << hides;
        QWidget* target = QString(hides) == "frmInfoSu" ? static_cast<QWidget*>(&about)
                                                        : about.findChild<QLabel*>(hides);
        ASSERT_NE(target, nullptr);
        click(target);
        EXPECT_FALSE(about.isVisible()) << hides;
    }
    EXPECT_EQ(opened().size(), 6);
}

struct LanguageCase {
    const char* language;
    const char* site; // empty: nothing opens
};

void PrintTo(const LanguageCase& c, std::ostream* os) {
    *os << c.language; // a stable test name
}

class LinkLanguageTest : public AboutTest, public testing::WithParamInterface<LanguageCase> {};

TEST_P(LinkLanguageTest, SiteDependsOnTheExactLanguageInBothWindows) {
    session().currentLanguage = QString::fromUtf8(GetParam().language);
    const QStringList expected =
        *GetParam().site ? QStringList{QString::fromLatin1(GetParam().site)} : QStringList{};
    frmInfoSu about;
    click(about.findChild<QLabel*>("Link"));
    EXPECT_EQ(opened(), expected);
    scripted().opened.clear();
    frmSplash splash;
    click(splash.findChild<QLabel*>("Link"));
    EXPECT_EQ(opened(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Languages, LinkLanguageTest,
    testing::Values(LanguageCase{"Italiano", "https://www.quillora.example/it/"},
                    LanguageCase{"English", "https://www.quillora.example/en/"},
                    LanguageCase{"Espa\xC3\xB1ol", "https://www.quillora.example/es/"},
                    LanguageCase{"Deutsch", ""}, LanguageCase{"italiano", ""},
                    LanguageCase{"", ""}));

TEST_F(AboutTest, MailLinkWritesToItsCaption) {
    frmSplash splash;
    auto* mail = splash.findChild<QLabel*>("MailTo");
    EXPECT_EQ(mail->text(), "support@quillora.example");
    click(mail);
    EXPECT_EQ(opened(), QStringList{"mailto:support@quillora.example"});
}

TEST_F(AboutTest, WithoutLinksFileNothingOpens) {
    session().folders =
        Folders::derive(QDir::tempPath() + "/no-such-quillora-folder/", QDir::tempPath());
    frmInfoSu about;
    click(about.findChild<QLabel*>("Link"));
    click(about.findChild<QLabel*>("MailTo"));
    EXPECT_TRUE(opened().isEmpty());
}

// Start-up shows the splash before it knows the folders, then loads it again.
TEST_F(AboutTest, SplashMadeBeforeTheFoldersTakesTheAddressesLater) {
    const Folders folders = session().folders;
    session() = Session{};
    scriptDialogs();
    frmSplash splash;
    auto* mail = splash.findChild<QLabel*>("MailTo");
    EXPECT_EQ(mail->text(), "");
    click(mail);
    click(splash.findChild<QLabel*>("Link"));
    EXPECT_TRUE(opened().isEmpty());

    session().folders = folders;
    session().currentLanguage = "English";
    session().links = Links::read(folders.linksFile());
    splash.Form_Load();
    EXPECT_EQ(mail->text(), "support@quillora.example");
    click(splash.findChild<QLabel*>("Link"));
    EXPECT_EQ(opened(), QStringList{"https://www.quillora.example/en/"});
}

TEST_F(AboutTest, SplashRunsItsSequenceOnceAndExposesItsProgress) {
    frmSplash splash;
    EXPECT_TRUE(splash.windowFlags().testFlag(Qt::FramelessWindowHint));
    ASSERT_NE(splash.PRG(), nullptr);
    EXPECT_EQ(splash.findChild<QProgressBar*>("PRG"), splash.PRG());
    EXPECT_TRUE(splash.firstActivation());
    EXPECT_FALSE(splash.firstActivation());
    EXPECT_TRUE(frmSplash().firstActivation()); // the flag is the window's own
}

TEST_F(AboutTest, OneAboutWindowForTheProgram) {
    frmInfoSu* about = frmInfoSu::instance();
    EXPECT_EQ(frmInfoSu::instance(), about);
    about->showAbout();
    EXPECT_TRUE(about->isVisible());
    key(about, Qt::Key_Escape);
    EXPECT_FALSE(about->isVisible());
    EXPECT_EQ(frmInfoSu::instance(), about);
}

// Both windows as a user first sees them: the picture, the version and the progress shown.
TEST_F(AboutTest, WindowsShowTheirPictureVersionAndProgress) {
    frmInfoSu about;
    about.show();
    auto* picture = about.findChild<QLabel*>("Image1");
    ASSERT_NE(picture, nullptr);
    EXPECT_TRUE(picture->isVisible());
    EXPECT_FALSE(picture->pixmap().isNull());
    EXPECT_FALSE(about.findChild<QLabel*>("lblVersion")->text().isEmpty());
    saveShot(about, "about.png");

    frmSplash splash;
    splash.PRG()->setValue(45);
    splash.show();
    EXPECT_TRUE(splash.PRG()->isVisible());
    EXPECT_EQ(splash.PRG()->value(), 45);
    EXPECT_TRUE(splash.findChild<QLabel*>("lblVersion")->isVisible());
    saveShot(splash, "splash.png");
}

} // namespace
