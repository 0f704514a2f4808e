#include "shell/RecentMenu.h"

#include "storage/ProjectStorageProvider.h"

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype kMostWorks = 10;
constexpr int kNameWidth = 320;

} // namespace

RecentMenu::RecentMenu(const QString& title, ProjectStorageProvider& storage, QWidget* parent)
    : QMenu(title, parent), storage_(storage)
{
    connect(this, &QMenu::aboutToShow, this, &RecentMenu::fill);
}

void RecentMenu::fill()
{
    clear();
    for (const ProjectInfo& work : storage_.recentProjects(kMostWorks)) {
        const QString name =
            fontMetrics().elidedText(work.name.simplified(), Qt::ElideMiddle, kNameWidth);
        const QString time = work.modifiedAt.toString(u"dd/MM/yyyy HH:mm"_s);
        addAction(QString(name).replace(u'&', "&&"_L1) + u"  ·  "_s + time, this,
                  [this, id = work.id] { emit chosen(id); });
    }
    if (isEmpty())
        addAction(tr("Todavía no hay ninguna"))->setEnabled(false);
}
