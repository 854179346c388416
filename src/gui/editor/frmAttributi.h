#pragma once

#include "gui/editor/SurfaceState.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

class QTreeWidget;
class QTreeWidgetItem;

namespace quillora::gui {

// The element property pane: one grid ("PROP") with a row per attribute of the element under
// the selection, as the tag table of the core lists them. The grid only shows and collects;
// the main window finds the element, writes edits back and serves the row buttons.
class frmAttributi : public QWidget {
    Q_OBJECT
public:
    explicit frmAttributi(QWidget* parent = nullptr);

    // Shows the element the caret mirror reports. The same element with other values keeps
    // its rows (and a row being edited keeps what is typed); another tag rebuilds the grid, an
    // unlisted one leaves it without rows.
    void showElement(const SurfaceState& state);
    // A row's text as the grid holds it (colour rows as "red;green;blue"); empty when the row
    // is not shown.
    QString rowValue(const QString& attribute) const;
    // Sets a row's text and reports it as edited.
    void editRow(const QString& attribute, const QString& value);
    // The allowed values of the "Class" row.
    void setClassList(const QStringList& classes);

    QTreeWidget* grid() const { return PROP; }
    QString shownTag() const { return m_tag; }

signals:
    void rowEdited(const QString& attribute, const QString& value);      // PROP_AfterEdit
    void buttonPressed(const QString& attribute, const QString& button); // "..." or "Edit"
    void classListWanted();

private:
    struct Row;
    void rebuild(const SurfaceState& state);
    void setShown(Row& row, const QString& value);
    static QString display(const Row& row, const SurfaceState& state);
    QWidget* makeEditor(Row& row);

    QTreeWidget* PROP = nullptr;
    QString m_tag;
    QHash<QString, Row*> m_rows; // by attribute, lower case
    QList<Row*> m_order;
};

} // namespace quillora::gui
