#pragma once

#include "core/app/MessageMarkup.h"

#include <QDialog>
#include <QList>
#include <QString>
#include <functional>

class QLabel;
class QHBoxLayout;
class QPushButton;
class QWidget;

namespace quillora::gui {

class frmMessage;

// What "yes" means for the keys of the question boxes, carried out by the main window that
// owns them.
class MessageKeyActions {
public:
    virtual ~MessageKeyActions() = default;
    // "id_cmdSalvaMess": save to the message's file, or ask for a name when it has none.
    virtual void saveForQuestion() = 0;
    // "Modifica immagine": the src of the image selected in the editing page.
    virtual QString selectedImageSource() const = 0;
};

// The button ids the box reports (those of the platform's task dialog).
inline constexpr int kIdOk = 1;
inline constexpr int kIdYes = 6;
inline constexpr int kIdNo = 7;
// The choices offered for a recovery copy.
inline constexpr int kIdRestore = 100;
inline constexpr int kIdSaveElsewhere = 101;
inline constexpr int kIdDiscard = 102;

// Everything a box shows, handed to the session's dialogs to be answered.
struct MessageRequest {
    QString key;   // MessageKey of a question box; empty for an information box
    QString title; // as the window shows it
    QString instructionMarkup;
    QString contentMarkup;
    QString footerMarkup; // empty when the box has no footer
    QString instruction;  // the three areas as shown, lines separated by "\n"
    QString content;
    QString footer;
    int mainIcon = 0;
    int footerIcon = 0;
    QList<int> buttons;        // kIdOk, or kIdYes and kIdNo
    frmMessage* box = nullptr; // the filled window; valid only while the answer is chosen
};

// The message box: a main instruction, a content, an optional footer, an icon and the
// buttons, drawn from the markup of bMessage. Filled by the bMessage routines below.
class frmMessage : public QDialog {
    Q_OBJECT
public:
    explicit frmMessage(QWidget* owner = nullptr);

    // The fill steps, in the order the routines use them.
    void setTexts(const QString& escapedTitle, const QString& instructionMarkup,
                  const QString& contentMarkup, const QString& footerMarkup);
    void setIcons(int mainIcon, int footerIcon);
    void setButtons(const QList<int>& ids);

    // The handler of every button: Yes carries out the action of MessageKey; OK and No do
    // nothing. The box closes after it with the id as its result.
    void TSK_ButtonClicked(int id);
    void TSK_HyperlinkClicked(const QString& url);

    MessageRequest request() const { return m_request; }
    // A button of the box has been handled.
    bool answered() const { return m_answered; }

    // The key of the last question box.
    static QString MessageKey();
    static void setMessageKey(const QString& key);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void runYesAction();
    QLabel* makeArea(const char* name);
    void showArea(QLabel* label, const QString& markup, QString& shown);

    QLabel* m_mainIcon = nullptr;
    QLabel* m_instruction = nullptr;
    QLabel* m_content = nullptr;
    QWidget* m_footerArea = nullptr;
    QLabel* m_footerIcon = nullptr;
    QLabel* m_footer = nullptr;
    QHBoxLayout* m_buttonRow = nullptr;
    QList<QPushButton*> m_buttons;
    MessageRequest m_request;
    bool m_answered = false;
};

namespace bMessage {

// An information box with OK. Without an owner the box belongs to the main window. The footer
// area (text and icon) appears only for a footer text that is not empty. Returns kIdOk, or 0
// when the box could not be shown.
int ShowMessage(const QString& title, const QString& instruction, const QString& content,
                const QString& footer = QString(),
                int mainIcon = quillora::bMessage::kIconInformation,
                int footerIcon = quillora::bMessage::kIconNone, QWidget* owner = nullptr);

// A question with Yes and No under a key, owned by the main window. On Yes the key's action
// has run by the time this returns. Returns kIdYes, kIdNo, or 0 when the box failed.
int ShowMessageYesNo(const QString& key, const QString& title, const QString& instruction,
                     const QString& content, const QString& footer = QString(),
                     int mainIcon = quillora::bMessage::kIconQuestion,
                     int footerIcon = quillora::bMessage::kIconNone);

// A question with the given buttons (kIdRestore, kIdSaveElsewhere, kIdDiscard, kIdYes, kIdNo)
// under a key, owned by the main window. Returns the id chosen, or 0 when the box failed.
int ShowMessageChoice(const QString& key, const QString& title, const QString& instruction,
                      const QString& content, const QList<int>& buttons,
                      int mainIcon = quillora::bMessage::kIconQuestion);

// What the last box showed (its box pointer is cleared).
MessageRequest lastRequest();

} // namespace bMessage

} // namespace quillora::gui
