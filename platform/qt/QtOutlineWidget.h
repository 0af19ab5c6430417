#pragma once

#include <QTreeView>

#include <functional>

namespace letterloft {

// A tree view that asks before it opens or closes a row, and ticks a row's check box by the space bar. Qt's own tree
// view tells only afterwards, so its own handling of the disclosure triangles and their keys is switched off.
class QtOutlineWidget final : public QTreeView {
public:
    using Question = std::function<bool(const QModelIndex& row)>;

    explicit QtOutlineWidget(QWidget* parent = nullptr);

    // To be asked before the user opens or closes a row.
    void setQuestions(Question shouldExpand, Question shouldCollapse);

    // What the user's click or key does: asks, then opens. Nothing for a row that is open or has no children.
    void openByUser(const QModelIndex& row);

    // The same for closing. The rows open inside close too; a selection among them goes.
    void closeByUser(const QModelIndex& row);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    bool handleKey(int key);
    void stepInto(const QModelIndex& row);
    void stepOut(const QModelIndex& row);
    void tickRow(const QModelIndex& row);
    void toggle(const QModelIndex& row);
    void closeWithin(const QModelIndex& row);
    void leaveRowsInside(const QModelIndex& row);
    QModelIndex rowWithTriangleAt(const QPoint& point) const;

    Question shouldExpand_;
    Question shouldCollapse_;
};

} // namespace letterloft
