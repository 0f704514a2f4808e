#include "shell/RecoveryBar.h"

#include "shell/OnlineSearchModel.h"
#include "shell/controls/PlainText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

RecoveryBar::RecoveryBar(QWidget* parent) : QFrame(parent), sentence_(plainLabel())
{
    setObjectName(u"barra_recuperacion"_s);
    sentence_->setWordWrap(true);
    // A long name makes the bar no wider.
    sentence_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* recover = new QPushButton(tr("Recuperar"));
    auto* discard = new QPushButton(tr("Descartar"));
    connect(recover, &QPushButton::clicked, this, &RecoveryBar::recoverRequested);
    connect(discard, &QPushButton::clicked, this, &RecoveryBar::dropOffered);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 6);
    layout->addWidget(sentence_, 1);
    layout->addWidget(recover);
    layout->addWidget(discard);
    hide();
}

void RecoveryBar::add(std::vector<AbandonedCopy> copies)
{
    std::ranges::move(copies, std::back_inserter(copies_));
    showOffered();
}

bool RecoveryBar::bringForward(const QString& id)
{
    const auto found = std::ranges::find(copies_, id, &AbandonedCopy::id);
    if (found == copies_.end())
        return false;
    std::rotate(copies_.begin(), found, found + 1);
    showOffered();
    return true;
}

const AbandonedCopy* RecoveryBar::offered() const
{
    return copies_.empty() ? nullptr : &copies_.front();
}

void RecoveryBar::dropOffered()
{
    if (copies_.empty())
        return;
    copies_.front().remove();
    copies_.erase(copies_.begin());
    showOffered();
}

void RecoveryBar::showOffered()
{
    setVisible(!copies_.empty());
    if (copies_.empty())
        return;
    // A work of somebody else may be called a whole page.
    const QString name = OnlineSearchModel::oneLine(copies_.front().name());
    sentence_->setText(tr("Velta se cerró sin guardar «%1».").arg(name));
}
