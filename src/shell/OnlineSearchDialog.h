#pragma once

#include <QDialog>
#include <QString>

#include <optional>

class ContentCatalog;
class ContentDownloadManager;
class InstalledContentRegistry;
class LoopLibrary;
class QHBoxLayout;
class QLabel;
class QListView;
class QPushButton;
class OnlineSearchModel;

/// The rhythms that were downloaded and those that the content server offers, to install and to
/// uninstall. Asks for the catalogue when it is made. A download may be cancelled, and goes on when
/// the dialog is gone.
class OnlineSearchDialog : public QDialog {
    Q_OBJECT

public:
    /// None of the services is owned.
    OnlineSearchDialog(const LoopLibrary& library, ContentCatalog& catalog,
                       ContentDownloadManager& downloads, const InstalledContentRegistry& registry,
                       QWidget* parent = nullptr);

    /// Has the first of these rhythms that can be installed be the current one, as soon as the list
    /// holds it; when it is installed, the next.
    void choose(const QStringList& rhythmIds);

private:
    QHBoxLayout* buildButtons();
    void listenToServices();
    void fillList();
    void showWanted();
    void tell(const QString& message);
    void install();
    void uninstall();

    /// What the list calls a rhythm, in one line.
    QString nameOf(const QString& rhythmId) const;

    /// The current rhythm, if there is one and it is installed or not as asked for.
    std::optional<QString> currentRhythm(bool installed) const;

    const LoopLibrary& library_;
    ContentCatalog& catalog_;
    ContentDownloadManager& downloads_;
    const InstalledContentRegistry& registry_;
    QLabel* status_;
    OnlineSearchModel* model_;
    QListView* list_;
    QPushButton* cancel_;
    QStringList wanted_;
};
