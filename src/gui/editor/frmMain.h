#pragma once

#include "core/app/EditorSettings.h"
#include "core/app/Texts.h"
#include "core/app/bLANG.h"
#include "core/message/BackgroundSound.h"
#include "core/message/BodyProperties.h"
#include "core/message/DocumentConverter.h"
#include "core/message/MessageDocument.h"
#include "core/spamcheck/PreSendCheck.h"
#include "gui/app/frmMessage.h"
#include "gui/editor/CommandBars.h"
#include "gui/tools/frmImpDaImg.h"

#include <QMainWindow>
#include <QPointer>
#include <QTemporaryDir>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <utility>

class QDockWidget;
class QLabel;
class QMenu;
class QProgressBar;
class QTabWidget;
class QTimer;

namespace quillora {
namespace Recovery {
class Claim;
class Writer;
} // namespace Recovery
} // namespace quillora

namespace quillora::gui {

class MessageOwner;
class RecentMenu;
class SourceView;
class VisualSurface;
class frmAccount;
class frmAllegati;
class frmAttributi;
class frmCheckMessage;
class frmCheckSpam;
class frmColor;
class frmPropBody;
class frmSelAudio;
class frmSendTest;
class PreviewPane;
class ImportJob;
class frmMemory;
class frmSocial;
class frmTemplate;

// The editor's main window: the three pages, the command bars, the attachments pane and the
// message being edited. Its routines are split by concern over frmMain*.cpp files.
class frmMain : public QMainWindow, public MessageKeyActions {
    Q_OBJECT
public:
    explicit frmMain(QWidget* parent = nullptr);
    ~frmMain() override;

    // Start-up: the loading phases, each announced in the log, then the command-line file.
    void Form_Load(const QString& commandLineFile);
    // Inside Form_Load, which lets the event loop run for a moment while the first page begins
    // to load: a close asked for meanwhile waits until it is over.
    bool isLoading() const { return m_loading; }

    // Shutdown: the save question, placement and layout, working folder, closing log lines.
    void ChiudiEDITOR();

    // Commands (frmMainCommands.cpp).
    void Dks_CommandClick(const QString& id);
    void CheckButtonMail();
    void CheckButtonCODE();
    void CheckToolbarStatus();
    void CheckToolBar(bool formattingAllowed);
    void InsertHtmlCode(const QString& html);

    // Pages (frmMainPages.cpp).
    enum Page { PageVisual = 0, PageSource = 1, PagePreview = 2 };
    void Tbs_SelectedChanged(int page);
    void VisualizzaTag();
    void RefreshPos(int x, int y);
    void EditaImmagine(); // asks, then opens the selected image with its program

    // The message (frmMainFiles.cpp).
    void NuovoMessaggio();
    bool ApriMessaggio(QString path = QString());
    bool SalvaMessaggio(const QString& path);
    bool RiSalva();
    bool SalvaMessaggioConNome();
    void Modificato();
    bool DaSalvare() const { return m_doc.DaSalvare(); }

    // What "yes" means in the message boxes this window owns.
    void saveForQuestion() override;
    QString selectedImageSource() const override;
    void CambiaTitoloEditor();

    // Import from an image (frmMainFiles.cpp): opens the window, which hands back a page of
    // slices; the page becomes the body and its folder the message's working folder.
    void ImportaDaImmagine();
    void showSlicedPage(const QString& pageFile, const QString& workFolder,
                        std::function<void(bool)> done);
    frmImpDaImg* imageImport() const { return m_imageImport; }

    // The spam check, the accounts and the e-mail export (frmMainSpam.cpp).
    void TestAntispam();
    void GestioneAccount();
    void EsportaEml();
    // The message as it stands, written to exactly `path` in the message file layout, leaving
    // its name and saved state alone.
    bool SalvaMessaggioPerCheckSpam(const QString& path);
    frmCheckSpam* spamCheck() const;
    frmAccount* accountsWindow() const;
    // Recovery copies, recent messages and one window per message (frmMainRecovery.cpp).
    // Writes the recovery copy of the message as it is now (with this body, when given);
    // false when it could not.
    bool writeRecoveryCopy(const std::optional<QString>& body = std::nullopt);
    // The same copy, written in the background: the window goes on at once.
    void postRecoveryCopy(const std::optional<QString>& body = std::nullopt);
    // Returns once no recovery copy is waiting or being written (for tests and the close).
    void waitForRecoveryCopy();
    // SIGTERM, SIGINT: nobody is there to answer, so the message goes to its recovery copy
    // (offered at the next start) and the window closes without a question.
    void closeForLogout();
    // The session manager is about to end the program: the same copy, and no question later.
    void sessionEnding();
    // Offers the copies left by editors that crashed or were killed; true when one was
    // restored into this window.
    bool offerRecovery();
    QString recoveryCopyFile() const;
    const EditorSettings& settings() const { return m_settings; }
    RecentMenu* recentMenu() const { return m_recent; }
    // Element properties, body properties, sound and unsubscribe link (frmMainProperties.cpp).
    void GetAllAttribute();
    void AggiornaItem(const QString& attribute, const QString& value);
    void PROP_InplaceButtonDown(const QString& attribute, const QString& button);
    void GetAllClass();
    void ProprietaBody();   // "cmdProprieta": fills the window from the body, then shows it
    void SelezionaAudio();  // "cmdAudio"
    void CheckDestRemove(); // rebuilds "popSubRem" from the accounts store
    std::optional<QString> GetEmailRemove(const QString& command);
    frmAttributi* properties() const { return m_attributi; }
    frmPropBody* bodyProperties() const { return m_propBody; }
    frmSelAudio* soundChoice() const { return m_selAudio; }
    // Imports (frmMainImports.cpp): the body is replaced, subject, priority and attachments
    // stay. Documents and mails convert on a worker thread behind a wait window;
    // importFinished tells when the body is in the page (or the import failed).
    void ApriFileWord(const QString& path);
    void ApriFileOutlook(const QString& path);
    void ImportaTesto(QString path = QString());
    void ImportaHtml(QString path = QString());
    void importDropped(const QString& path); // by the file's type, after the save question
    ImportJob* runningImport() const { return m_import; }

    // Content tools (frmMainTools.cpp).
    // A snippet dragged from the snippet pane and dropped at a point of the visual page.
    void DHTML_DragDrop(QPoint viewPos);
    // The template chooser; the chosen page becomes a new message.
    void ApriModelli();
    // The page of a template's thumbnail as the body of a new message; its images are copied
    // into the message's working folder. False (and the error report) when it cannot be read.
    bool ImportaTemplate(const QString& thumbnailPath);
    void ApriSocial();
    frmMemory* memory() const { return m_memory; }
    frmSocial* social() const { return m_social; }
    frmTemplate* templateChooser() const;
    // The splash window's bar, which the social window's preparation moves on.
    void setSplashBar(QProgressBar* bar);

    // Placement in twips (LeggiIMP / ScriviIMP applied to this window).
    void applyPlacement();
    void rememberPlacement();

    // The check before sending (frmMainCheck.cpp): opens "Check message" on the current
    // message; choosing a finding selects its element in the visual page.
    void VerificaMessaggio();
    std::optional<check::CheckInput> checkInput();
    void selectFinding(const check::ElementRef& element);
    frmCheckMessage* checkWindow() const;
    // "Send test...": the message as a mailing sends it, through an account, to one address.
    void InvioProva();
    frmSendTest* sendTestWindow() const;
    PreviewPane* previewPane() const { return m_preview; }

    // The current body: from the page that holds it.
    std::optional<QString> bodyHtml();

    const MessageDocument& document() const { return m_doc; }
    VisualSurface* visualPage() const { return DHTML; }
    VisualSurface* previewPage() const;
    // The source page, made when first asked for: most sessions never open it.
    SourceView* sourcePage();
    QTabWidget* tabs() const { return Tbs; }
    frmAllegati* attachments() const { return m_allegati; }
    CommandBars& bars() { return m_bars; }
    Texts& texts() { return m_texts; }

    // Where the language loading reports its progress (the splash window's bar).
    void setLoadProgress(std::function<void(qint64, qint64)> progress) {
        m_loadProgress = std::move(progress);
    }

signals:
    void documentLoaded(); // a message, new or opened, is in the visual page
    void closed();         // ChiudiEDITOR has run: the program ends
    void importFinished(bool ok);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildPages();
    void buildPanes();
    // The language file is read on a second thread while the panes are built; Form_Load takes
    // the texts (or reads the file itself if the language or file changed meanwhile).
    void readLanguageMeanwhile();
    bLANG::LanguageTexts languageTexts();
    void buildToolPanes();
    void InitializeSocial();
    void connectPages();
    void CaricaFont();
    void CaricaSize();
    void ColoraEditCode();
    // The body as the source page holds it, whether or not the page has been made yet.
    QString sourceText() const;
    void setSourceText(const QString& html);
    void connectSourcePage();
    // False, after saying why, when the accounts store could not be opened at start-up.
    bool accountsReady();
    void buildPropertyPane();
    void dockPropertyPane();
    void insertUnsubscribeLink(const QString& command);
    void writeBodyProperties(const BodyProperties::Values& values);
    void placeSound(const BackgroundSound::Choice& choice);
    // The bodies of the routines above, which report a failure under their own name.
    void runCommand(const QString& id);
    void updateCheckButtonMail();
    void updateCheckButtonCODE();
    void updateCheckToolbarStatus();
    void updateCheckToolBar(bool formattingAllowed);
    void showBody(const QString& html, bool markModifiedWhenChanged, const QString& routine);
    // When the visual page cannot take a body: the source page holds it and is shown.
    void showSourceInstead();
    QString pageFileError(const QString& folder) const;
    QString workFolder();
    QString chooseFile(const QString& title, const QString& filter, bool save);
    bool askToSave();
    void collectDocument();
    void startConversion(const QString& source, const QString& routine);
    void finishImport(const DocumentConverter::Imported& imported, const QString& folder,
                      const QString& source);
    QString importFailureText(const DocumentConverter::Result& r) const;
    void loadImportedBody(const QString& html, const QString& baseFolder);
    void stopImport();
    void reportError(const QString& routine, const QString& description);
    void buildRecentAndOwner();
    void startRecovery();
    // The reading half of ApriMessaggio: the file into the document and the pages.
    bool openFile(const QString& path);
    void restoreCopy(Recovery::Claim& claim);
    bool saveCopyElsewhere(Recovery::Claim& claim);
    void rememberRecent(const QString& file);
    void changeRecent(const std::function<void(EditorSettings&)>& change);
    void dropRecoveryCopy();
    std::optional<std::pair<MessageDocument, QString>>
    recoverySnapshot(const std::optional<QString>& body);
    // Another editor has this message open: it is brought forward, and true is returned.
    bool openElsewhere(const QString& file);

    MessageDocument m_doc;
    CommandBars m_bars;
    Texts& m_texts; // the session's
    QTabWidget* Tbs = nullptr;
    VisualSurface* DHTML = nullptr;
    SourceView* CODE = nullptr;      // see sourcePage()
    QWidget* m_sourceHost = nullptr; // the source page's tab, which CODE fills once made
    QString m_sourceText;            // CODE's text until it is made
    QString m_sourceScheme;          // the syntax colours CODE is made with
    QMenu* m_editMenu = nullptr;     // "popModifica", the pages' context menu
    PreviewPane* m_preview = nullptr;
    QPointer<frmCheckMessage> m_check;
    QPointer<frmSendTest> m_sendTest;
    QLabel* lblTags = nullptr;
    QLabel* lblTag = nullptr;
    QLabel* stcHelp = nullptr;
    QLabel* stcX = nullptr;
    QLabel* stcY = nullptr;
    frmAllegati* m_allegati = nullptr;
    QDockWidget* dckAllegati = nullptr;
    frmMemory* m_memory = nullptr;
    QDockWidget* dckMemory = nullptr;
    frmSocial* m_social = nullptr;
    QPointer<frmTemplate> m_templates;
    QPointer<QProgressBar> m_splashBar;
    frmColor* m_colour = nullptr; // "pwnColor"
    frmAttributi* m_attributi = nullptr;
    QDockWidget* dckProperty = nullptr;
    frmPropBody* m_propBody = nullptr;
    frmSelAudio* m_selAudio = nullptr;
    QMenu* popSubRem = nullptr;
    QString m_imageToEdit; // a property row's image while its "Edit" button asks
    QPointer<frmImpDaImg> m_imageImport;
    QPointer<frmCheckSpam> m_spamCheck;
    QPointer<frmAccount> m_accounts;
    ImportJob* m_import = nullptr;
    std::function<void(qint64, qint64)> m_loadProgress;
    std::future<bLANG::LanguageTexts> m_languageRead;
    QList<QDockWidget*> m_visualPanes;
    QTemporaryDir m_scratch;
    int m_page = PageVisual;
    // The visual page and the source text held the same body at these counts of source edits
    // and page loads; nullopt when the two may differ.
    struct PagesInStep {
        quint64 edits;
        quint64 loads;
        bool operator==(const PagesInStep&) const = default;
    };
    std::optional<PagesInStep> m_pagesInStep;
    PagesInStep pagesNow() const;
    bool m_closing = false;
    bool m_terminating = false; // closing on a signal or for the session: no question
    bool m_loading = false;
    EditorSettings m_settings;
    std::unique_ptr<Recovery::Writer> m_recoveryWriter;
    QTimer* m_autoSave = nullptr;
    RecentMenu* m_recent = nullptr;
    MessageOwner* m_owner = nullptr;
};

} // namespace quillora::gui
