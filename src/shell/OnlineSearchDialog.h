#pragma once

#include <QDialog>
#include <QList>
#include <QString>

#include <optional>

class ContentCatalog;
class ContentDownloadManager;
class InstalledContentRegistry;
class LoopLibrary;
class QHBoxLayout;
class QLabel;
class QListWidget;

/// A rhythm as the search shows it.
struct OnlineSearchRow {
    QString text;
    QString rhythmId;
    bool installed = false;

    friend bool operator==(const OnlineSearchRow&, const OnlineSearchRow&) = default;
};

/// The rhythms that were downloaded and those that the content server offers, to install and to
/// uninstall. Asks for the catalogue when it is made. A download goes on when the dialog is gone.
class OnlineSearchDialog : public QDialog {
    Q_OBJECT

public:
    /// None of the services is owned.
    OnlineSearchDialog(const LoopLibrary& library, ContentCatalog& catalog,
                       ContentDownloadManager& downloads, const InstalledContentRegistry& registry,
                       QWidget* parent = nullptr);

    /// First what was downloaded, in order of installation, then what else is offered, in the order
    /// of the catalogue.
    static QList<OnlineSearchRow> rows(const LoopLibrary& library, const ContentCatalog& catalog,
                                       const InstalledContentRegistry& registry);

private:
    QHBoxLayout* buildButtons();
    void listenToServices();
    void fillList();
    void install();
    void uninstall();

    /// The current rhythm, if there is one and it is installed or not as asked for.
    std::optional<QString> currentRhythm(bool installed) const;

    const LoopLibrary& library_;
    ContentCatalog& catalog_;
    ContentDownloadManager& downloads_;
    const InstalledContentRegistry& registry_;
    QLabel* status_;
    QListWidget* list_;
};
