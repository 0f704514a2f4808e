#include "shell/OnlineSearchDialog.h"

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstalledContentRegistry.h"
#include "content/LoopLibrary.h"
#include "shell/OnlineSearchModel.h"
#include "shell/controls/PlainText.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize kSearchSize(460, 360);

} // namespace

OnlineSearchDialog::OnlineSearchDialog(const LoopLibrary& library, ContentCatalog& catalog,
                                       ContentDownloadManager& downloads,
                                       const InstalledContentRegistry& registry, QWidget* parent)
    : QDialog(parent), library_(library), catalog_(catalog), downloads_(downloads),
      registry_(registry), status_(plainLabel(tr("Consultando el catálogo…"))),
      model_(new OnlineSearchModel(this)), list_(new QListView)
{
    setWindowTitle(tr("Buscar más ritmos en línea"));
    resize(kSearchSize);
    // Messages come from a server and are of any length.
    status_->setWordWrap(true);
    list_->setObjectName(u"lista_ritmos"_s);
    list_->setModel(model_);
    // Ten thousand lines are not measured one by one.
    list_->setUniformItemSizes(true);
    // What the buttons are about is always seen: the focus makes an item current in silence.
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, list_,
            [this](const QModelIndex& index) {
                list_->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
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
    cancel_ = new QPushButton(tr("Cancelar"));
    cancel_->setVisible(downloads_.isBusy());
    connect(cancel_, &QPushButton::clicked, &downloads_, &ContentDownloadManager::cancelInstall);
    connect(install, &QPushButton::clicked, this, &OnlineSearchDialog::install);
    connect(uninstall, &QPushButton::clicked, this, &OnlineSearchDialog::uninstall);

    auto* row = new QHBoxLayout;
    row->addWidget(install);
    row->addWidget(uninstall);
    row->addWidget(cancel_);
    row->addStretch();
    return row;
}

void OnlineSearchDialog::listenToServices()
{
    using Downloads = ContentDownloadManager;
    connect(&catalog_, &ContentCatalog::catalogLoaded, this, [this] {
        tell({});
        fillList();
    });
    connect(&catalog_, &ContentCatalog::catalogFailed, this, [this](const QString& message) {
        // What a former catalogue offers stays in the list.
        const QString sentence =
            catalog_.entries().isEmpty()
                ? tr("Sin conexión al catálogo (%1). Se muestra solo lo instalado.")
                : tr("Sin conexión al catálogo (%1). Se muestra lo instalado y el último catálogo "
                     "que se recibió.");
        tell(sentence.arg(OnlineSearchModel::oneLine(message)));
    });
    connect(&downloads_, &Downloads::progress, this,
            [this](const QString& message) { tell(OnlineSearchModel::oneLine(message)); });
    connect(&downloads_, &Downloads::rhythmInstalled, this, [this](const QString& rhythmId) {
        tell(tr("%1 instalado.").arg(nameOf(rhythmId)));
        fillList();
    });
    connect(&downloads_, &Downloads::installFailed, this,
            [this](const QString&, const QString& message) {
                tell(tr("Error: %1").arg(OnlineSearchModel::oneLine(message)));
            });
    connect(&downloads_, &Downloads::installCancelled, this, [this] {
        // The button goes, and the focus would pass on to the one that closes the dialog.
        list_->setFocus();
        tell(tr("Descarga cancelada."));
    });
}

void OnlineSearchDialog::tell(const QString& message)
{
    status_->setText(message);
    cancel_->setVisible(downloads_.isBusy());
}

void OnlineSearchDialog::fillList()
{
    model_->setRows(OnlineSearchModel::rows(library_, catalog_, registry_));
    showWanted();
}

void OnlineSearchDialog::choose(const QStringList& rhythmIds)
{
    wanted_ = rhythmIds;
    showWanted();
}

void OnlineSearchDialog::showWanted()
{
    for (int row = 0; !wanted_.isEmpty() && row < model_->rowCount(); ++row) {
        const QModelIndex index = model_->index(row);
        if (!index.data(OnlineSearchModel::kInstalledRole).toBool() &&
            wanted_.contains(index.data(OnlineSearchModel::kRhythmIdRole).toString())) {
            list_->setCurrentIndex(index);
            return;
        }
    }
}

std::optional<QString> OnlineSearchDialog::currentRhythm(bool installed) const
{
    const QModelIndex index = list_->currentIndex();
    if (!index.isValid() || index.data(OnlineSearchModel::kInstalledRole).toBool() != installed)
        return std::nullopt;
    return index.data(OnlineSearchModel::kRhythmIdRole).toString();
}

QString OnlineSearchDialog::nameOf(const QString& rhythmId) const
{
    const auto rows = OnlineSearchModel::rows(library_, catalog_, registry_);
    const auto row = std::ranges::find(rows, rhythmId, &OnlineSearchRow::rhythmId);
    return OnlineSearchModel::oneLine(row == rows.end() ? rhythmId : row->name);
}

void OnlineSearchDialog::install()
{
    if (const auto rhythmId = currentRhythm(false))
        downloads_.installRhythm(*rhythmId);
}

void OnlineSearchDialog::uninstall()
{
    const auto rhythmId = currentRhythm(true);
    if (!rhythmId)
        return;
    // Nobody knows it by its name afterwards.
    const QString name = nameOf(*rhythmId);
    if (!downloads_.uninstallRhythm(*rhythmId))
        return;
    tell(tr("%1 desinstalado; se liberó el espacio de los instrumentos que ya no se usan.")
             .arg(name));
    fillList();
}
