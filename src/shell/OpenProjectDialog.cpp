#include "shell/OpenProjectDialog.h"

#include "shell/Prompts.h"
#include "storage/ProjectStorageProvider.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize kInitialSize(420, 360);

} // namespace

OpenProjectDialog::OpenProjectDialog(const QList<ProjectInfo>& works,
                                     ProjectStorageProvider* storage, Prompts& prompts,
                                     QWidget* parent)
    : QDialog(parent), storage_(storage), prompts_(prompts), list_(new QListWidget)
{
    setWindowTitle(tr("Abrir obra"));
    resize(kInitialSize);
    for (const ProjectInfo& work : works) {
        auto* item = new QListWidgetItem(
            u"%1  ·  %2"_s.arg(work.name, work.modifiedAt.toString(u"dd/MM/yyyy"_s)), list_);
        item->setData(Qt::UserRole, work.id);
    }

    auto* label = new QLabel(tr("Obras guardadas:"));
    label->setBuddy(list_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    const QPushButton* remove = buttons->addButton(tr("Borrar"), QDialogButtonBox::DestructiveRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(remove, &QPushButton::clicked, this, &OpenProjectDialog::deleteCurrent);
    connect(list_, &QListWidget::itemDoubleClicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(list_, 1);
    layout->addWidget(buttons);

    // Rows are laid out as they come, before the list's style says how high they are.
    list_->ensurePolished();
    list_->setCurrentRow(0);
    list_->doItemsLayout();
}

std::optional<QString> OpenProjectDialog::currentId() const
{
    const QListWidgetItem* item = list_->currentItem();
    return item ? std::optional(item->data(Qt::UserRole).toString()) : std::nullopt;
}

void OpenProjectDialog::deleteCurrent()
{
    const QListWidgetItem* item = list_->currentItem();
    if (!item)
        return;
    const auto answer = prompts_.ask(this, tr("Borrar obra"),
                                     tr("¿Borrar «%1»? No se puede deshacer.").arg(item->text()),
                                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    storage_->deleteProject(item->data(Qt::UserRole).toString());
    delete item;
}
