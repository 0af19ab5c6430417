#pragma once

#include <QDialog>
#include <QFileIconProvider>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>

#include <functional>

namespace letterloft {

// Chooses one entry of a folder: a file, a folder, or either, which Qt's own file dialogs don't offer in one panel.
// Shows hidden entries and dangling links. A link is chosen as itself. Names that are no UTF-8 can't be shown or
// chosen; the dialog says so.
// What was said last is chosen: the selected row, the path typed, or the folder gone into; the home folder and those
// above it only by their row.
class QtFileChooser final : public QDialog {
public:
    struct Wanted {
        QString prompt;  // the confirm button's title, plain
        QString message; // plain
        QString folder;  // where it starts; home if that is no folder
    };

    // Whether that entry can be chosen. Folders can be entered in any case.
    using Filter = std::function<bool(const QFileInfo& entry)>;

    QtFileChooser(const Wanted& wanted, Filter canChoose);

    // Absolute; empty until the dialog was accepted.
    QString chosen() const { return chosen_; }

    // Stays, and says why, if the path can't be told in UTF-8.
    void accept() override;

    // Hands the focus over while it still has it; when a dialog above another one is gone, Xfwm4 gives the focus to the
    // window below both, which is blocked.
    void done(int result) override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Qt gives a dangling link "-1 bytes" (6.4).
    class Entries final : public QFileSystemModel {
    public:
        QVariant data(const QModelIndex& index, int role) const override;
    };

    void layOut(const Wanted& wanted);
    void wire();
    void showFolder(const QString& folder);
    void goUp();
    void scrollToLeft();
    void goToTyped();
    void activate(const QModelIndex& entry);
    void preferTyped();
    void preferSelected();
    void updateConfirm();
    void updateDefault();
    void tellNothingAt(const QString& path);
    void tell(const QString& problem);
    bool isTyped() const;
    QString typedPath() const;
    QString selectedPath() const;
    QString wantedPath() const; // what the confirm button takes; empty if nothing

    Filter canChoose_;
    QFileIconProvider icons_; // outlives the model
    Entries model_;
    QLineEdit* location_;
    QPushButton* up_;
    QTreeView* entries_;
    QLabel* notListed_;
    QLabel* problem_;
    QPushButton* confirm_;
    QString shown_;               // the folder that is listed
    QString left_;                // the last folder that "Up" has left
    bool isShownOffered_ = false; // it can be chosen itself: the user went there, and has selected nothing in it since
    QString chosen_;
};

} // namespace letterloft
