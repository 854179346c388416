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

// The button ids the box reports (those of the platform's task dialog).
inline constexpr int kIdOk = 1;
inline constexpr int kIdYes = 6;
inline constexpr int kIdNo = 7;

// Everything a box shows. Scripted runs and tests get it instead of a modal window.
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
    using AnswerProvider = std::function<int(const MessageRequest&)>;

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

    // The key of the last question box.
    static QString MessageKey();
    static void setMessageKey(const QString& key);

    // "id_cmdSalvaMess": the main window's save (it knows whether the message has a file).
    static void setSaveAction(std::function<void()> save);
    // "Modifica immagine": the src of the image selected in the editing page.
    static void setImageSource(std::function<QString()> source);
    // Puts the language's captions on a box's buttons (set by the main window).
    static void setLocaliser(std::function<void(QWidget*)> localise);

    // When set, boxes are answered by it and never shown (scripted runs, tests).
    static void setAnswerProvider(AnswerProvider provider);
    static const AnswerProvider& answerProvider();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    static std::function<void(QWidget*)>& localiser();
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

// What the last box showed (its box pointer is cleared).
MessageRequest lastRequest();

} // namespace bMessage

} // namespace quillora::gui
