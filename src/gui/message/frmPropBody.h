#pragma once

#include "core/message/BodyProperties.h"

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace quillora::gui {

// The body properties window: margins, the five document colours and the background image.
// The main window fills it (PrendiValori), shows it and writes back what cdmSalva hands over.
// Closing it only hides it.
class frmPropBody : public QDialog {
    Q_OBJECT
public:
    explicit frmPropBody(QWidget* parent = nullptr);

    void PrendiValori(const BodyProperties::Values& values);
    BodyProperties::Values values() const;
    qint32 colour(BodyProperties::Colour c) const { return m_colours[c]; }

    void cdmSalva_Click();
    void cmdApriImmagine_Click();

signals:
    void saved(const BodyProperties::Values& values);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void setColour(BodyProperties::Colour c, qint32 rgb);

    QLineEdit* txtSx = nullptr;
    QLineEdit* txtUp = nullptr;
    QLineEdit* txtWd = nullptr;
    QLineEdit* txtHg = nullptr;
    QLineEdit* txtImmagineSfondo = nullptr;
    QPushButton* m_colourButtons[BodyProperties::ColourCount] = {};
    qint32 m_colours[BodyProperties::ColourCount] = {};
};

} // namespace quillora::gui
