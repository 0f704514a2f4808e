#include "shell/AlturasWidgets.h"

#include <QApplication>
#include <QFile>
#include <QTimer>
#include <QWidget>

#include <chrono>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace ovelin {

namespace {

constexpr int kLevelsInFull = 3;
constexpr int kTall = 40;
constexpr int kDeepestWithChildren = 8;

QString sizeText(const QSize& size)
{
    return u"%1x%2"_s.arg(size.width()).arg(size.height());
}

QString lineOf(const QWidget* widget, const QSize& needed, int depth)
{
    const QString name = widget->objectName();
    return QString(2 * depth, u' ') + QLatin1StringView(widget->metaObject()->className()) +
           (name.isEmpty() ? QString() : " #"_L1 + name) + "  min="_L1 + sizeText(needed) +
           "  actual="_L1 + sizeText(widget->size()) + u'\n';
}

void writeHeights(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return;
    for (const QWidget* widget : QApplication::topLevelWidgets())
        file.write(alturasDelArbol(widget).toUtf8());
}

} // namespace

QString alturasDelArbol(const QWidget* root, int depth)
{
    if (!root->isVisible())
        return {};
    QString text;
    const QSize needed = root->sizeHint().expandedTo(root->minimumSize());
    if (depth < kLevelsInFull || needed.height() >= kTall)
        text += lineOf(root, needed, depth);
    if (depth > kDeepestWithChildren)
        return text;
    for (const QObject* child : root->children()) {
        const auto* widget = qobject_cast<const QWidget*>(child);
        if (widget && !widget->isWindow())
            text += alturasDelArbol(widget, depth + 1);
    }
    return text;
}

void medirAlturasSiHaceFalta()
{
    const QString path = qEnvironmentVariable("MEDIR_ALTURAS");
    if (!path.isEmpty())
        QTimer::singleShot(2000ms, Qt::CoarseTimer, qApp, [path] { writeHeights(path); });
}

} // namespace ovelin
