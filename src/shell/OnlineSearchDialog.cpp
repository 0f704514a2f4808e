#include "shell/OnlineSearchDialog.h"

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "content/LoopLibrary.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <optional>

namespace {

constexpr QSize kInitialSize(460, 360);
constexpr int kRhythmIdRole = Qt::UserRole;
constexpr int kInstalledRole = Qt::UserRole + 1;

QString megabytes(qint64 bytes)
{
    constexpr double kBytesPerMegabyte = 1048576.0;
    return QString::number(static_cast<double>(bytes) / kBytesPerMegabyte, 'f', 1);
}

} // namespace

OnlineSearchDialog::OnlineSearchDialog(const LoopLibrary& library, ContentCatalog& catalog,
                                       ContentDownloadManager& downloads,
                                       const InstalledContentRegistry& registry, QWidget* parent)
    : QDialog(parent), library_(library), catalog_(catalog), downloads_(downloads),
      registry_(registry), status_(new QLabel(tr("Consultando el catálogo…"))),
      list_(new QListWidget)
{
    setWindowTitle(tr("Buscar más ritmos en línea"));
    resize(kInitialSize);
    // Messages come from a server and are of any length.
    status_->setTextFormat(Qt::PlainText);
    status_->setWordWrap(true);
    // What the buttons are about is always seen: the focus makes an item current in silence.
    connect(list_, &QListWidget::currentItemChanged, list_, [](QListWidgetItem* item) {
        if (item)
            item->setSelected(true);
    });
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(status_);
    layout->addWidget(list_, 1);
    layout->addLayout(buildButtons());
    layout->addWidget(close);

    fillList();
    listenToServices();
    catalog_.refresh();
}

QHBoxLayout* OnlineSearchDialog::buildButtons()
{
    auto* install = new QPushButton(tr("Instalar ritmo"));
    auto* uninstall = new QPushButton(tr("Desinstalar ritmo"));
    connect(install, &QPushButton::clicked, this, &OnlineSearchDialog::install);
    connect(uninstall, &QPushButton::clicked, this, &OnlineSearchDialog::uninstall);

    auto* row = new QHBoxLayout;
    row->addWidget(install);
    row->addWidget(uninstall);
    row->addStretch();
    return row;
}

void OnlineSearchDialog::listenToServices()
{
    using Downloads = ContentDownloadManager;
    connect(&catalog_, &ContentCatalog::catalogLoaded, this, [this] {
        status_->clear();
        fillList();
    });
    connect(&catalog_, &ContentCatalog::catalogFailed, this, [this](const QString& message) {
        status_->setText(
            tr("Sin conexión al catálogo (%1). Se muestra solo lo instalado.").arg(message));
    });
    connect(&downloads_, &Downloads::progress, status_, &QLabel::setText);
    connect(&downloads_, &Downloads::rhythmInstalled, this, [this](const QString& rhythmId) {
        status_->setText(tr("%1 instalado.").arg(rhythmId));
        fillList();
    });
    connect(&downloads_, &Downloads::installFailed, this,
            [this](const QString&, const QString& message) {
                status_->setText(tr("Error: %1").arg(message));
            });
}

QList<OnlineSearchRow> OnlineSearchDialog::rows(const LoopLibrary& library,
                                                const ContentCatalog& catalog,
                                                const InstalledContentRegistry& registry)
{
    QList<OnlineSearchRow> rows;
    for (const QString& id : registry.installedRhythms()) {
        const Rhythm* rhythm = library.findRhythm(id);
        rows.append({tr("%1 — instalado").arg(rhythm ? rhythm->displayName : id), id, true});
    }
    for (const CatalogEntry& entry : catalog.entries()) {
        if (registry.isRhythmInstalled(entry.rhythmId))
            continue;
        const QString text = tr("%1 (%2) — %3 MB para descargar")
                                 .arg(entry.displayName, entry.styleDisplayName,
                                      megabytes(entry.estimatedDownloadBytes));
        rows.append({text, entry.rhythmId, false});
    }
    return rows;
}

void OnlineSearchDialog::fillList()
{
    list_->clear();
    for (const OnlineSearchRow& row : rows(library_, catalog_, registry_)) {
        auto* item = new QListWidgetItem(row.text, list_);
        item->setData(kRhythmIdRole, row.rhythmId);
        item->setData(kInstalledRole, row.installed);
    }
}

std::optional<QString> OnlineSearchDialog::currentRhythm(bool installed) const
{
    const QListWidgetItem* item = list_->currentItem();
    if (!item || item->data(kInstalledRole).toBool() != installed)
        return std::nullopt;
    return item->data(kRhythmIdRole).toString();
}

void OnlineSearchDialog::install()
{
    if (const auto rhythmId = currentRhythm(false))
        downloads_.installRhythm(*rhythmId);
}

void OnlineSearchDialog::uninstall()
{
    const auto rhythmId = currentRhythm(true);
    if (!rhythmId || !downloads_.uninstallRhythm(*rhythmId))
        return;
    status_->setText(tr("%1 desinstalado; se liberó el espacio de los instrumentos que ya no se "
                        "usan.")
                         .arg(*rhythmId));
    fillList();
}
