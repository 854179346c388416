#pragma once

#include <QColor>
#include <QList>
#include <QMetaObject>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <optional>

class QLabel;
class QPushButton;

namespace quillora::gui {

class VisualSurface;
class ColourGrid;

// The text-colour picker that drops down from the text toolbar ("pwnColor"): a grid of web
// colours and "More colours..." for any other. It opens on the colour of the text at the
// caret of the visual page, and a pick is applied to the selection (or to the text typed next)
// at once.
class frmColor : public QWidget {
    Q_OBJECT
public:
    explicit frmColor(QWidget* parent = nullptr);
    ~frmColor() override;

    // Dks_PopupWindowShow for "pwnColor": asks the surface for the caret's colour, takes it
    // as the current one (when the surface has none, the previous colour stays) and shows
    // the picker with its top-left corner at `at` (global), kept on the screen.
    void open(VisualSurface* surface, QPoint at);

    // The picker's colour: a platform value, red in the lowest byte.
    qint32 color() const { return m_color; }
    void setColor(qint32 color);

    // A pick: the surface's selection takes the colour, and the picker closes.
    void color_Change(qint32 picked);

    // The colours of the grid, row by row.
    static const QList<QColor>& webColours();
    // The grid cell showing the current colour, -1 when the colour is not in the grid.
    int currentIndex() const;
    // The grid, and the centre of one of its cells in the grid's coordinates.
    QWidget* grid() const;
    QPoint cellCentre(int index) const;

signals:
    void colourPicked(qint32 color);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Form_Load();
    void takeSurfaceColour();
    void moreColours();
    void showCurrent();

    qint32 m_color = 0;
    QPointer<VisualSurface> m_surface;
    QMetaObject::Connection m_stateConnection;
    ColourGrid* m_grid = nullptr;
    QLabel* m_sample = nullptr;
    QLabel* m_code = nullptr;
    QPushButton* m_more = nullptr;
};

} // namespace quillora::gui
