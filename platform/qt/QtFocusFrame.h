#pragma once

#include <QAbstractItemView>

namespace letterloft {

// Draws a view's frame in the colour of the selection while the keys go there. By itself the style Fusion shows no
// difference between a view with the focus and one that has only a row selected (Qt 6.4).
class QtFocusFrame final : public QObject {
public:
    // Owned by the view.
    explicit QtFocusFrame(QAbstractItemView& view);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAbstractItemView& view_;
};

} // namespace letterloft
