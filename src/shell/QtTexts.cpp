#include "shell/QtTexts.h"

#include <QLibraryInfo>

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Words {
    std::string_view english;
    const char* spanish;
};

/// Where Qt's Spanish says "usted", or calls a folder or a key by another word than the program.
constexpr Words kWords[] = {
    {"%1 already exists.\nDo you want to replace it?", "%1 ya existe.\n¿Querés reemplazarlo?"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     "%1\nNo encontré el archivo.\nFijate si el nombre está bien escrito."},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     "%1\nNo encontré la carpeta.\nFijate si el nombre está bien escrito."},
    {"'%1' is write protected.\nDo you want to delete it anyway?",
     "«%1» está protegido.\n¿Querés borrarlo igual?"},
    {"Are you sure you want to delete '%1'?", "¿Seguro que querés borrar «%1»?"},
    {"Could not delete directory.", "No pude borrar la carpeta."},
    {"Directory:", "Carpeta:"},
    {"Directories", "Carpetas"},
    {"Find Directory", "Buscar carpeta"},
    {"Parent Directory", "Carpeta de arriba"},
    {"Go to the parent directory", "Ir a la carpeta de arriba"},
    {"File Folder", "Carpeta"},
    {"Folder", "Carpeta"},
    {"Date Modified", "Cambiado"},
    {"Ctrl", "Ctrl"},
    {"Shift", "Shift"},
    {"Return", "Enter"},
};

} // namespace

void QtTexts::loadSpanish()
{
    const bool loaded = load(u"qtbase_es"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    Q_UNUSED(loaded)
}

QString QtTexts::translate(const char* context, const char* sourceText, const char* disambiguation,
                           int n) const
{
    const auto own = std::ranges::find(kWords, std::string_view(sourceText), &Words::english);
    if (own != std::end(kWords))
        return QString::fromUtf8(own->spanish);
    return QTranslator::translate(context, sourceText, disambiguation, n)
        .replace("fichero"_L1, "archivo"_L1)
        .replace("Fichero"_L1, "Archivo"_L1);
}
