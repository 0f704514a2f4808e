#include "app/QMain.h"

#include "app/AboutVelta.h"
#include "app/SelfTest.h"
#include "app/StartOptions.h"
#include "shell/AlturasWidgets.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/MainWindow.h"
#include "shell/QtTexts.h"
#include "shell/theme/ThemeManager.h"

#include <QApplication>
#include <QIcon>
#include <QLoggingCategory>

#include <algorithm>
#include <string_view>

using namespace Qt::Literals::StringLiterals;
using namespace std::string_view_literals;

namespace {

/// The arguments as they are before there is an application, which may open a display.
QStringList argumentsOf(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

bool isSet(const char* variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

/// The self-test needs no display, and a machine without one is where it is run most. One that is
/// named may be gone all the same.
void chooseOffscreenForSelfTest(int argc, char** argv)
{
#ifdef Q_OS_UNIX
    const bool selfTest = std::any_of(
        argv, argv + argc, [](const char* argument) { return argument == "--selftest"sv; });
    if (selfTest && !isSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#else
    Q_UNUSED(argc)
    Q_UNUSED(argv)
#endif
}

/// The standard streams belong to the self-test: Qt's own warnings stay off them, unless a
/// developer asks for them through QT_LOGGING_RULES.
void keepStreamsQuiet()
{
    QLoggingCategory::setFilterRules(u"*.debug=false\n*.info=false\n*.warning=false"_s);
}

/// As long as there may be no window at all, the reason is worth a line.
void keepStreamsQuietButForThePlatform()
{
    QLoggingCategory::setFilterRules(
        u"*.debug=false\n*.info=false\n*.warning=false\nqt.qpa.*.warning=true"_s);
}

void setIdentity()
{
    QCoreApplication::setApplicationName(u"Velta"_s);
    QCoreApplication::setOrganizationName(u"Ovelin"_s);
    QCoreApplication::setApplicationVersion(AboutVelta::version());
}

} // namespace

int qMain(int argc, char** argv)
{
    if (AboutVelta::print(StartOptions::read(argumentsOf(argc, argv)).about))
        return 0;
    keepStreamsQuietButForThePlatform();
    chooseOffscreenForSelfTest(argc, argv);
    QApplication application(argc, argv);
    keepStreamsQuiet();
    application.installEventFilter(new ovelin::IgualadorSimbolos(&application));
    setIdentity();
    QGuiApplication::setWindowIcon(
        QIcon(QCoreApplication::applicationDirPath() + "/resources/icons/velta_256.png"_L1));

    const StartOptions options = StartOptions::read(QCoreApplication::arguments());
    if (options.selfTestDir)
        return runSelfTest(*options.selfTestDir);

    QtTexts qtTexts;
    qtTexts.loadSpanish();
    QCoreApplication::installTranslator(&qtTexts);
    ThemeManager::instance()->applySavedTheme();
    MainWindow window;
    if (window.restoreLayout())
        window.show();
    else
        window.showMaximized();
    ovelin::medirAlturasSiHaceFalta();
    if (options.projectId)
        window.openProjectById(*options.projectId);
    else if (options.workFile)
        window.openWorkFile(*options.workFile);
    return QApplication::exec();
}
