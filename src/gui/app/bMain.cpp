#include "gui/app/bMain.h"

#include "core/app/AccountStore.h"
#include "core/app/ProgramFolders.h"
#include "core/app/Provisioning.h"
#include "core/app/bError.h"
#include "core/app/bLANG.h"
#include "gui/app/LanguageApplier.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmSplash.h"
#include "gui/editor/frmMain.h"

#include <QApplication>
#include <QLocale>
#include <QPointer>
#include <QProgressBar>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace quillora::gui::bMain {

namespace {

int g_signalFds[2] = {-1, -1};
bool g_quitBeforeWindow = false; // a signal came before the main window was there, or built

void onSignal(int) {
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_signalFds[0], &c, 1);
}

} // namespace

void installSignalHandlers() {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalFds) != 0)
        return;
    auto* notifier = new QSocketNotifier(g_signalFds[1], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [] {
        char c;
        [[maybe_unused]] const ssize_t n = ::read(g_signalFds[1], &c, 1);
        // Like a desktop logout: nobody can answer a question now, so the main window keeps
        // unsaved changes in its recovery copy and closes without asking.
        for (QWidget* w : QApplication::topLevelWidgets()) {
            // A window still being built (its load lets the event loop run) is not there yet.
            auto* main = qobject_cast<frmMain*>(w);
            if (main && !main->isLoading()) {
                main->closeForLogout();
                return;
            }
        }
        g_quitBeforeWindow = true;
        QApplication::exit(0);
    });
    struct sigaction sa = {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &sa, nullptr);
    sigaction(SIGINT, &sa, nullptr);
}

std::unique_ptr<frmMain> Form_Activate(frmSplash& splash, const Folders& folders,
                                       const QString& commandLineFile) {
    FormOnTop(&splash);
    QApplication::processEvents();
    Session& s = session();
    s.folders = folders;
    Provisioning::ensureDataFolders(folders, ProgramFolders::defaultsFolder(folders),
                                    QLocale::system().name());
    s.currentLanguage = bLANG::SetVarCurrLanguage(folders.languageChoiceFile());
    s.links = Links::read(folders.linksFile());
    splash.Form_Load(); // the version and the links, now that the program folder is known

    const StoreResult db = AccountStore::open(folders.accountDatabase());
    bError::InitError(folders);
    s.accountsError.clear();
    if (!db.ok()) {
        // The editor works without accounts: reported once, remembered for the commands
        // that need them.
        s.accountsError = db.error;
        bError::wrtErr(QStringLiteral("Form_Activate"), QStringLiteral("5"), 0, db.error);
        ShowErrorReport(QStringLiteral("frmSplash.Form_Activate()"), 0, db.error, &splash);
    }
    s.windowsUserKind = Provisioning::userKind();
    bError::wrtErrFree(s.windowsUserKind == 0
                           ? QStringLiteral("UtenteWindows.......: Administrator")
                           : QStringLiteral("UtenteWindows.......: NormalUser"));
    bError::wrtErrFree(QLatin1String(bError::kHyphens));
    bError::wrtErrFree(QStringLiteral("### LOG FUNZIONI APPLICAZIONE ###"));

    auto window = std::make_unique<frmMain>();
    window->setLoadProgress(progressOn(splash.PRG()));
    window->setSplashBar(splash.PRG());
    window->Form_Load(commandLineFile);
    window->setLoadProgress({});
    return window;
}

int Main(QApplication& app, const Folders& folders, const QString& commandLineFile) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    frmSplash splash;
    splash.Form_Load();
    splash.show();
    QApplication::processEvents();

    int rc = 0;
    std::unique_ptr<frmMain> window;
    // The sequence runs on the splash window's first activation only.
    if (splash.firstActivation())
        window = Form_Activate(splash, folders, commandLineFile);
    // Closing the splash shows the main window.
    splash.close();
    QApplication::restoreOverrideCursor();
    if (!window)
        return 1;
    if (g_quitBeforeWindow) {
        // Ended while starting: nothing was edited yet, the window closes the normal way.
        window->closeForLogout();
        window.reset();
        AccountStore::close();
        return 0;
    }
    window->show();
    QObject::connect(window.get(), &frmMain::closed, &app, &QApplication::quit,
                     Qt::QueuedConnection);
    // The session manager asks before it ends the program: the copy is written then, and the
    // close that follows asks nothing.
    QPointer<frmMain> sessionGuard(window.get());
    QObject::connect(
        &app, &QGuiApplication::commitDataRequest, window.get(),
        [sessionGuard](QSessionManager&) {
            if (sessionGuard)
                sessionGuard->sessionEnding();
        },
        Qt::DirectConnection);

    // A development hook for scripts without a display: save a picture of the window once
    // its first document is in the visual page.
    const QString shot = qEnvironmentVariable("QUILLORA_SCREENSHOT");
    if (!shot.isEmpty()) {
        QPointer<frmMain> guard(window.get());
        QObject::connect(
            window.get(), &frmMain::documentLoaded, window.get(),
            [guard, shot] {
                QTimer::singleShot(700, guard, [guard, shot] {
                    if (guard)
                        guard->grab().save(shot);
                });
            },
            Qt::SingleShotConnection);
    }
    rc = app.exec();
    window.reset();
    AccountStore::close();
    return rc;
}

} // namespace quillora::gui::bMain
