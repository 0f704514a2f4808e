#include "shell/ProjectGallery.h"

#include "model/Song.h"
#include "shell/NewProjectDialog.h"
#include "shell/WorkDeletion.h"
#include "shell/controls/PlainText.h"
#include "storage/ProjectStorageProvider.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize kIconSize(56, 56);
constexpr QSize kGridSize(150, 122);

QIcon noteIcon()
{
    QPixmap pixmap(kIconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QFont font = painter.font();
    font.setPixelSize(43);
    painter.setFont(font);
    painter.drawText(QRect(QPoint(), kIconSize), Qt::AlignCenter, u"🎵"_s);
    return QIcon(pixmap);
}

QLabel* titleLabel(const QFont& widgetFont)
{
    auto* title = new QLabel(u"Velta"_s);
    // The application's sheet has a size for labels, and one for this name.
    title->setObjectName(u"titulo_galeria"_s);
    QFont font = widgetFont;
    font.setPointSize(26);
    font.setWeight(QFont::Bold);
    title->setFont(font);
    title->setStyleSheet(u"color: #4A7325;"_s);
    return title;
}

QListWidget* iconList()
{
    auto* list = new QListWidget;
    list->setViewMode(QListView::IconMode);
    list->setIconSize(kIconSize);
    list->setGridSize(kGridSize);
    list->setResizeMode(QListView::Adjust);
    list->setMovement(QListView::Static);
    list->setWordWrap(true);
    return list;
}

} // namespace

ProjectGallery::ProjectGallery(ProjectStorageProvider* storage, QWidget* parent, Prompts& prompts)
    : QWidget(parent), storage_(storage), prompts_(prompts), list_(iconList())
{
    auto* create = new QPushButton(tr("Nuevo proyecto"));
    create->setStyleSheet(u"QPushButton { background-color: #4A7325; color: white; padding: 6px "
                          "16px; border-radius: 4px; }"_s);
    auto* open = new QPushButton(tr("Abrir"));
    auto* remove = new QPushButton(tr("Borrar"));
    connect(create, &QPushButton::clicked, this, &ProjectGallery::openNewProjectDialog);
    connect(open, &QPushButton::clicked, this, &ProjectGallery::openCurrent);
    connect(remove, &QPushButton::clicked, this, &ProjectGallery::deleteCurrent);
    connect(list_, &QListWidget::itemDoubleClicked, this, &ProjectGallery::openCurrent);

    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {create, open, remove})
        buttons->addWidget(button);
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 30, 40, 30);
    layout->addWidget(titleLabel(font()));
    layout->addWidget(new QLabel(tr("Editor de música de la suite Fulgra")));
    layout->addSpacing(12);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);
    refresh();
}

void ProjectGallery::refresh()
{
    list_->clear();
    const QIcon icon = noteIcon();
    for (const ProjectInfo& info : storage_->listProjects()) {
        auto* item = new QListWidgetItem(
            icon, u"%1\n%2"_s.arg(info.name, info.modifiedAt.toString(u"dd/MM/yyyy"_s)), list_);
        item->setData(Qt::UserRole, info.id);
        item->setTextAlignment(Qt::AlignHCenter | Qt::AlignTop);
        item->setToolTip(plainToolTip(tr("Abrir «%1»").arg(info.name)));
    }
}

bool ProjectGallery::askNewProject(QWidget* parent, QString* name, TimeSignature* timeSignature,
                                   KeySignature* key, int* bpm, Prompts& prompts)
{
    NewProjectDialog dialog(parent);
    if (!prompts.run(dialog))
        return false;
    *name = dialog.name();
    *timeSignature = dialog.timeSignature();
    *key = dialog.key();
    *bpm = dialog.bpm();
    return true;
}

void ProjectGallery::openNewProjectDialog()
{
    QString name;
    TimeSignature timeSignature;
    KeySignature key;
    int bpm = Song::kDefaultBpm;
    if (askNewProject(this, &name, &timeSignature, &key, &bpm, prompts_))
        emit createRequested(name, timeSignature, key, bpm);
}

void ProjectGallery::openCurrent()
{
    if (const QListWidgetItem* item = list_->currentItem())
        emit openRequested(item->data(Qt::UserRole).toString());
}

void ProjectGallery::deleteCurrent()
{
    const QListWidgetItem* item = list_->currentItem();
    if (!item)
        return;
    if (askAndDelete({.title = tr("Borrar proyecto"),
                      .id = item->data(Qt::UserRole).toString(),
                      .name = item->text()},
                     this, *storage_, prompts_))
        refresh();
}
