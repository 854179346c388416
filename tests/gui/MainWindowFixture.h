#pragma once

// The real main window on a fresh session, as the suites that drive the whole editor use it.
#include "core/app/AccountStore.h"
#include "core/app/TextFile.h"
#include "core/app/bError.h"
#include "core/message/MessageFile.h"
#include "gui/PageProbe.h"
#include "gui/ScriptedDialogs.h"
#include "gui/TestSession.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/VisualSurface.h"
#include "gui/editor/frmMain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSize>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

// The newsletters the tests read: one folder each, its index.html and its pictures.
inline const QString kCorpus = QStringLiteral(QUILLORA_SOURCE_DIR "/tests/data/html/");

inline bool waitFor(const std::function<bool()>& done, int ms = 15000) {
    return QTest::qWaitFor(done, ms);
}

// Saves a picture of the widget among the build's screenshots; whether it could be written.
inline bool saveShot(QWidget& w, const QString& name) {
    const QString folder = QStringLiteral(QUILLORA_BINARY_DIR "/screenshots");
    QDir().mkpath(folder);
    return w.grab().save(folder + "/" + name);
}

// A file's bytes; "<missing>" when it cannot be read, so that two missing files never match.
inline QByteArray fileBytes(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

class MainWindowTest : public testing::Test {
protected:
    // Not a button: every question is answered with the first button it offers.
    static constexpr int kFirstButton = -1;

    void SetUp() override {
        freshSession(dir);
        scripted().onAnswer = [this](const quillora::gui::MessageRequest& r) {
            return answerQuestion(r);
        };
        scripted().onFile = [this](const ScriptedDialogs::FileQuestion&) { return chosenFile; };
    }
    void TearDown() override {
        window.reset();
        quillora::AccountStore::close();
        quillora::bError::setLogPath(QString());
    }

    // Counts a question that has a key, keeps it as the last one and answers `answer` when it is
    // offered, else the first button.
    int answerQuestion(const quillora::gui::MessageRequest& r) {
        if (!r.key.isEmpty())
            ++questions;
        lastRequest = r;
        return r.buttons.contains(answer) ? answer : r.buttons.value(0);
    }

    // Between the window's load and its first show (the colour phase, for instance).
    virtual void beforeShow(quillora::gui::frmMain&) {}

    // A new main window, at windowSize when set, once its new message has loaded; with a
    // command line, once the file it names has opened too.
    quillora::gui::frmMain& start(const QString& commandLine = QString()) {
        using quillora::gui::frmMain;
        window = std::make_unique<frmMain>();
        QSignalSpy loaded(window.get(), &frmMain::documentLoaded);
        window->Form_Load(commandLine);
        beforeShow(*window);
        if (windowSize.isValid())
            window->resize(windowSize);
        window->show();
        EXPECT_TRUE(loaded.count() > 0 || loaded.wait(20000)) << "the new message never loaded";
        if (!commandLine.isEmpty()) {
            EXPECT_TRUE(loaded.count() > 1 || loaded.wait(20000)) << "the file never opened";
        }
        return *window;
    }
    quillora::gui::VisualSurface* page() const { return window->visualPage(); }
    // Replaces the body the way the source page does, and waits for the visual page.
    void setBody(const QString& html) {
        QSignalSpy done(page(), &quillora::gui::VisualSurface::documentComplete);
        page()->setDocumentHTML(html, dir.path() + "/");
        ASSERT_TRUE(done.wait(20000));
    }
    QString html() { return page()->documentHTML().value_or(QString()); }
    void newMessage() {
        QSignalSpy loaded(window.get(), &quillora::gui::frmMain::documentLoaded);
        window->NuovoMessaggio();
        ASSERT_TRUE(loaded.wait(20000));
    }
    QStringList log() const {
        QStringList lines;
        quillora::TextFile::readLines(quillora::gui::session().folders.logFile(), lines);
        return lines;
    }
    // A newsletter of the corpus saved as a message file in the test's folder; the file's path.
    QString saveCorpusMessage(const QString& newsletter, const QString& subject,
                              const QString& fileName) {
        quillora::MessageDocument d;
        d.subject = subject;
        d.body = quillora::TextFile::read(kCorpus + newsletter + "/index.html").text;
        const QString path = dir.filePath(fileName);
        quillora::MessageFile::SaveOptions options;
        options.baseFolder = kCorpus + newsletter + "/";
        EXPECT_TRUE(quillora::MessageFile::SalvaMessaggio(d, path, options).ok());
        return path;
    }
    // An account in the open accounts store; its id, or -1.
    qint64 addAccount(const QString& name, const QString& address, bool active = true,
                      const QString& smtpServer = QString()) {
        quillora::Account a;
        a.displayName = name;
        a.address = address;
        a.active = active;
        a.smtpServer = smtpServer;
        a.authentication = "login";
        a.security = "starttls";
        return quillora::AccountStore().add(a).value_or(-1);
    }

    QTemporaryDir dir;
    std::unique_ptr<quillora::gui::frmMain> window;
    QSize windowSize;   // unset: the window's own size
    QString chosenFile; // every file question is answered with it (empty: cancelled)
    int answer = quillora::gui::kIdNo;
    int questions = 0;
    quillora::gui::MessageRequest lastRequest;
};
