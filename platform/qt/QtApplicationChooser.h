#pragma once

#include "platform/linux/InstalledApplications.h"

#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <vector>

namespace letterloft {

// Chooses an application of this desktop: one of the installed ones, which can be searched, or, by browsing, a desktop
// entry, a bundle, an AppImage or another executable.
class QtApplicationChooser final : public QDialog {
public:
    struct Wanted {
        QString prompt;  // the confirm button's title, plain
        QString message; // plain
        QString folder;  // where browsing starts; home if that is no folder
    };

    QtApplicationChooser(const Wanted& wanted, const std::vector<InstalledApplications::Application>& applications);

    // Absolute; empty until the dialog was accepted.
    QString chosen() const { return chosen_; }

    void accept() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fill(std::vector<InstalledApplications::Application> applications);
    void layOut();
    void search(const QString& text);
    void browse();

    Wanted wanted_;
    QLineEdit* search_;
    QListWidget* list_;
    QPushButton* confirm_;
    QString chosen_;
};

} // namespace letterloft
