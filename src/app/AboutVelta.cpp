#include "app/AboutVelta.h"

#include "app/Console.h"

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

QString AboutVelta::version()
{
    return QString::fromLatin1(VELTA_VERSION);
}

QString AboutVelta::versionText()
{
    return u"Velta %1\n"_s.arg(version());
}

QString AboutVelta::helpText()
{
    return uR"(Velta: para componer canciones en la escuela.

Uso: velta [opción] [obra.velta]

  obra.velta            Abre una obra que llegó en un archivo, como obra nueva.
  --open ID             Abre la obra guardada en la carpeta ID de Documentos/Velta.
  --proyecto ID         Lo mismo.
  --selftest [CARPETA]  Prueba el programa sin ventana y deja en CARPETA lo que exporta.
  --help                Muestra esta ayuda.
  --version             Muestra la versión.

Variables de entorno:

  VELTA_CONTENT_URL     Dirección del servidor de ritmos; si no, la que diga
                        /etc/velta/velta.conf; si no, http://127.0.0.1:8765
)"_s;
}

bool AboutVelta::print(StartOptions::About about)
{
    if (about == StartOptions::About::Nothing)
        return false;
    attachConsole();
    const QString text = about == StartOptions::About::Help ? helpText() : versionText();
    std::fputs(qUtf8Printable(text), stdout);
    std::fflush(stdout);
    return true;
}
