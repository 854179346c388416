#pragma once

#include "core/spamcheck/PreSendCheck.h"

#include <QDialog>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QPushButton;
class QSpinBox;
class QTreeWidget;
class QTreeWidgetItem;

namespace quillora::gui {

// "Check message": the findings of the check before sending, one row each, errors first.
// Choosing a row that points at an element asks for that element to be selected.
class frmCheckMessage : public QDialog {
    Q_OBJECT
public:
    // What to check, read afresh on every run; nullopt when the message cannot be read now.
    using Source = std::function<std::optional<check::CheckInput>()>;

    explicit frmCheckMessage(Source source, QWidget* parent = nullptr);

    // Runs the check and lists its findings.
    void runCheck();

    const std::vector<check::Finding>& findings() const { return m_findings; }
    QTreeWidget* list() const { return lstFindings; }

signals:
    void elementChosen(const check::ElementRef& element);

private:
    void choose(QTreeWidgetItem* item);
    void applyTexts();

    Source m_source;
    std::vector<check::Finding> m_findings;
    QLabel* lblSummary = nullptr;
    QTreeWidget* lstFindings = nullptr;
    QSpinBox* spnSizeLimit = nullptr;
    QLabel* lblSizeLimit = nullptr;
    QPushButton* cmdAgain = nullptr;
    QPushButton* cmdClose = nullptr;
};

} // namespace quillora::gui
