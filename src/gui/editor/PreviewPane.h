#pragma once

#include "core/app/Texts.h"

#include <QString>
#include <QWidget>
#include <optional>

class QAction;
class QComboBox;
class QHBoxLayout;
class QToolButton;

namespace quillora::gui {

class VisualSurface;

// The Preview page: the preview surface at the width of a desktop, a phone or a tablet, in
// light or dark mode, optionally with the sample recipient's values in its merge fields. All of
// it works on the preview's own copy: the message is never touched. Its bar is made when the
// page is first shown or asked for: most sessions never open the preview.
class PreviewPane : public QWidget {
    Q_OBJECT
public:
    enum class Width { Desktop = 0, Phone = 1, Tablet = 2 };
    static constexpr int kPhonePx = 375;
    static constexpr int kTabletPx = 768;

    explicit PreviewPane(QWidget* parent = nullptr);

    // Shows a body (its references already pointing where the preview finds the files).
    void showBody(const QString& html, const QString& folder);

    void setWidthPreset(Width width);
    Width widthPreset() const;
    void setDark(bool on);
    bool dark() const;
    void setForceDark(bool on);
    void setSampleRecipient(bool on);
    bool sampleRecipient() const;
    // Opens the window where the sample recipient's values are edited.
    void editSampleRecipient();

    void applyTexts(const Texts& texts);
    // The preview's surface, made when first asked for: most sessions never open the preview,
    // and a web page of its own would cost every start a few milliseconds.
    VisualSurface* surface();

protected:
    void showEvent(QShowEvent* event) override;

signals:
    // The preview shows the last body with every current option applied.
    void rendered();

private:
    void build();
    void showTexts();
    void render();
    void afterLoad();
    void applyWidth();
    QString settingsFile() const;

    VisualSurface* m_web = nullptr;
    QWidget* m_stage = nullptr;
    QHBoxLayout* m_stageLayout = nullptr;
    QComboBox* m_width = nullptr;
    QToolButton* m_dark = nullptr;
    QAction* m_forceDark = nullptr;
    QToolButton* m_sample = nullptr;
    QAction* m_editSample = nullptr;
    std::optional<Texts> m_texts; // the last texts applied, for a bar made later
    QString m_html;
    QString m_folder;
};

} // namespace quillora::gui
