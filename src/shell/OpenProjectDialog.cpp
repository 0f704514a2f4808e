#include "shell/OpenProjectDialog.h"

#include "shell/Meters.h"
#include "shell/Prompts.h"
#include "shell/WorkDeletion.h"
#include "shell/controls/ClockText.h"
#include "storage/ProjectStorageProvider.h"
#include "views/MusicWords.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize kGallerySize(460, 420);

constexpr int kIdRole = Qt::UserRole;
/// Name and time, as a question has them.
constexpr int kTitleRole = Qt::UserRole + 1;
constexpr int kNameRole = Qt::UserRole + 2;

const QString kGap = u"  ·  "_s;

/// With the name of the rhythm, if there is one.
QString factsOf(const SongFacts& song, const QString& rhythm)
{
    QStringList facts{clockText(qRound64(song.seconds)), meterText(song.timeSignature),
                      MusicWords::key(song.key), rhythm};
    facts.removeAll(QString());
    return facts.join(kGap);
}

/// Letters without their accents and case.
QString plainLetters(const QString& text)
{
    QString plain = text.normalized(QString::NormalizationForm_KD);
    plain.removeIf([](QChar letter) { return letter.category() == QChar::Mark_NonSpacing; });
    return plain.toCaseFolded();
}

bool holdsAll(const QString& text, const QStringList& words)
{
    return std::ranges::all_of(words, [&](const QString& word) { return text.contains(word); });
}

} // namespace

OpenProjectDialog::OpenProjectDialog(const QList<ProjectInfo>& works,
                                     ProjectStorageProvider* storage, Prompts& prompts,
                                     QWidget* parent, const RhythmNames& rhythmNames)
    : QDialog(parent), storage_(storage), prompts_(prompts), list_(new QListWidget)
{
    setWindowTitle(tr("Abrir obra"));
    resize(kGallerySize);
    QList<ProjectInfo> sorted = works;
    std::ranges::stable_sort(sorted, std::ranges::greater(), &ProjectInfo::modifiedAt);
    for (const ProjectInfo& work : sorted)
        addWork(work, rhythmNames);

    auto* label = new QLabel(tr("Obras guardadas:"));
    label->setBuddy(list_);
    connect(list_, &QListWidget::itemDoubleClicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    if (works.size() >= kManyWorks)
        layout->addWidget(searchField());
    layout->addWidget(label);
    layout->addWidget(list_, 1);
    layout->addWidget(buttonRow());

    // Rows are laid out as they come, before the list's style says how high they are.
    list_->ensurePolished();
    list_->setCurrentRow(0);
    list_->doItemsLayout();
    list_->setFocus();
}

void OpenProjectDialog::addWork(const ProjectInfo& work, const RhythmNames& rhythmNames)
{
    const QString time = work.modifiedAt.toString(u"dd/MM/yyyy HH:mm"_s);
    const QString rhythm = work.song && rhythmNames ? rhythmNames(work.song->rhythmId) : QString();
    const QString facts = work.song ? kGap + factsOf(*work.song, rhythm) : QString();
    auto* item = new QListWidgetItem(work.name + u'\n' + time + facts, list_);
    item->setData(kIdRole, work.id);
    item->setData(kTitleRole, QString(work.name + kGap + time));
    item->setData(kNameRole, plainLetters(work.name));
}

QDialogButtonBox* OpenProjectDialog::buttonRow()
{
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    const QPushButton* remove = buttons->addButton(tr("Borrar"), QDialogButtonBox::DestructiveRole);
    const QPushButton* file =
        buttons->addButton(tr("Desde un archivo…"), QDialogButtonBox::ActionRole);
    connect(file, &QPushButton::clicked, this, [this] {
        wantsFile_ = true;
        accept();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(remove, &QPushButton::clicked, this, &OpenProjectDialog::deleteCurrent);
    return buttons;
}

QLineEdit* OpenProjectDialog::searchField()
{
    auto* field = new QLineEdit;
    field->setPlaceholderText(tr("Buscar obra…"));
    field->setAccessibleName(tr("Buscar obra"));
    field->setClearButtonEnabled(true);
    field->installEventFilter(this);
    connect(field, &QLineEdit::textChanged, this, &OpenProjectDialog::search);
    return field;
}

bool OpenProjectDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down)
            return QCoreApplication::sendEvent(list_, event);
    }
    return QDialog::eventFilter(watched, event);
}

void OpenProjectDialog::search(const QString& words)
{
    const QStringList wanted = plainLetters(words).split(u' ', Qt::SkipEmptyParts);
    int first = -1;
    for (int row = list_->count() - 1; row >= 0; --row) {
        QListWidgetItem* item = list_->item(row);
        item->setHidden(!holdsAll(item->data(kNameRole).toString(), wanted));
        first = item->isHidden() ? first : row;
    }
    if (!currentId())
        list_->setCurrentRow(first);
}

std::optional<QString> OpenProjectDialog::currentId() const
{
    const QListWidgetItem* item = list_->currentItem();
    return item && !item->isHidden() ? std::optional(item->data(kIdRole).toString()) : std::nullopt;
}

void OpenProjectDialog::deleteCurrent()
{
    const QListWidgetItem* item = list_->currentItem();
    if (!item || item->isHidden())
        return;
    if (askAndDelete({.title = tr("Borrar obra"),
                      .id = item->data(kIdRole).toString(),
                      .name = item->data(kTitleRole).toString()},
                     this, *storage_, prompts_))
        delete item;
}
