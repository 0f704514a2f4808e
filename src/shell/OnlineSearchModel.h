#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

class ContentCatalog;
class InstalledContentRegistry;
class LoopLibrary;

/// A rhythm as the search shows it.
struct OnlineSearchRow {
    QString rhythmId;
    QString name;
    /// Name of its style, where it is offered.
    QString style;
    qint64 downloadBytes = 0;
    bool installed = false;

    /// What its line reads.
    QString text() const;

    friend bool operator==(const OnlineSearchRow&, const OnlineSearchRow&) = default;
};

/// The rhythms of the search, whose texts are made when they are shown: there may be ten thousand.
/// Qt::UserRole is the rhythm's id, the role behind it whether the rhythm is installed.
class OnlineSearchModel : public QAbstractListModel {
    Q_OBJECT

public:
    static constexpr int kRhythmIdRole = Qt::UserRole;
    static constexpr int kInstalledRole = Qt::UserRole + 1;

    using QAbstractListModel::QAbstractListModel;

    /// First what was downloaded, in order of installation, then what else is offered, in the order
    /// of the catalogue. The program's own rhythms are neither.
    static QList<OnlineSearchRow> rows(const LoopLibrary& library, const ContentCatalog& catalog,
                                       const InstalledContentRegistry& registry);

    /// A text that comes from elsewhere as one line of a bounded length, without the marks that
    /// turn what stands beside them round.
    static QString oneLine(QString text);

    void setRows(const QList<OnlineSearchRow>& rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    QList<OnlineSearchRow> rows_;
};
