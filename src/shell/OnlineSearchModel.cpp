#include "shell/OnlineSearchModel.h"

#include "content/ContentCatalog.h"
#include "content/InstallPlan.h"
#include "content/InstalledContentRegistry.h"
#include "content/LoopLibrary.h"

#include <QCoreApplication>
#include <QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

QString megabytes(qint64 bytes)
{
    constexpr double kBytesPerMegabyte = 1048576.0;
    return QString::number(static_cast<double>(bytes) / kBytesPerMegabyte, 'f', 1);
}

bool isDirectionMark(QChar character)
{
    switch (character.direction()) {
    case QChar::DirLRE:
    case QChar::DirLRO:
    case QChar::DirRLE:
    case QChar::DirRLO:
    case QChar::DirPDF:
    case QChar::DirLRI:
    case QChar::DirRLI:
    case QChar::DirFSI:
    case QChar::DirPDI:
        return true;
    default:
        // The marks that stand for a letter of one direction.
        return character == u'\u061C' || character == u'\u200E' || character == u'\u200F';
    }
}

bool breaksTheLine(QChar character)
{
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph;
}

} // namespace

QString OnlineSearchModel::oneLine(QString text)
{
    constexpr qsizetype kMaxLength = 200;
    if (text.size() > kMaxLength) {
        const bool halvesAPair = text.at(kMaxLength - 1).isHighSurrogate();
        text.truncate(halvesAPair ? kMaxLength - 1 : kMaxLength);
        text += u'…';
    }
    text.removeIf(isDirectionMark);
    std::ranges::replace_if(text, breaksTheLine, u' ');
    return text;
}

QString OnlineSearchRow::text() const
{
    const QString shown = OnlineSearchModel::oneLine(name);
    if (installed)
        return QCoreApplication::translate("OnlineSearchDialog", "%1 — instalado").arg(shown);
    return QCoreApplication::translate("OnlineSearchDialog", "%1 (%2) — %3 MB para descargar")
        .arg(shown, OnlineSearchModel::oneLine(style), megabytes(downloadBytes));
}

QList<OnlineSearchRow> OnlineSearchModel::rows(const LoopLibrary& library,
                                               const ContentCatalog& catalog,
                                               const InstalledContentRegistry& registry)
{
    QList<OnlineSearchRow> rows;
    for (const QString& id : registry.installedRhythms()) {
        const Rhythm* rhythm = library.findRhythm(id);
        rows.append({.rhythmId = id,
                     .name = rhythm ? rhythm->displayName : id,
                     .style = {},
                     .installed = true});
    }
    const QSet<QString> installed(registry.installedRhythms().begin(),
                                  registry.installedRhythms().end());
    for (const CatalogEntry& entry : catalog.entries()) {
        if (installed.contains(entry.rhythmId) ||
            InstallPlan::isProgramsOwn(entry.rhythmId, library, registry))
            continue;
        rows.append({.rhythmId = entry.rhythmId,
                     .name = entry.displayName,
                     .style = entry.styleDisplayName,
                     .downloadBytes = entry.estimatedDownloadBytes});
    }
    return rows;
}

void OnlineSearchModel::setRows(const QList<OnlineSearchRow>& rows)
{
    beginResetModel();
    rows_ = rows;
    endResetModel();
}

int OnlineSearchModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant OnlineSearchModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const OnlineSearchRow& row = rows_.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return row.text();
    case kRhythmIdRole:
        return row.rhythmId;
    case kInstalledRole:
        return row.installed;
    default:
        return {};
    }
}
