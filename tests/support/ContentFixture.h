#pragma once

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

/// The object that a JSON text holds. A text that is no object is a mistake in the test.
inline QJsonObject jsonObject(const QByteArray& text)
{
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(text, &problem);
    if (!document.isObject())
        qFatal("No JSON object (%s): %s", qPrintable(problem.errorString()), text.constData());
    return document.object();
}

inline QJsonObject noteJson(const NoteEvent& note)
{
    return {{QStringLiteral("pitch"), note.pitch},
            {QStringLiteral("startBeat"), note.startBeat},
            {QStringLiteral("durationBeats"), note.durationBeats},
            {QStringLiteral("velocity"), note.velocity}};
}

inline QJsonObject variantJson(const LoopVariant& variant)
{
    static const QStringList kSections{QStringLiteral("Intro"), QStringLiteral("Intermedio"),
                                       QStringLiteral("Normal"), QStringLiteral("Final")};
    QJsonArray notes;
    for (const NoteEvent& note : variant.notes)
        notes.append(noteJson(note));
    return {{QStringLiteral("layerId"), variant.layerId},
            {QStringLiteral("section"), kSections.value(static_cast<int>(variant.section))},
            {QStringLiteral("variantIndex"), variant.variantIndex},
            {QStringLiteral("durationBars"), variant.durationBars},
            {QStringLiteral("notes"), notes}};
}

/// The text of a package with what the renderer looks at: the rhythm's id and meter, layers and
/// variants.
inline QByteArray packageText(const Rhythm& rhythm, const QList<LoopLayer>& layers,
                              const QList<LoopVariant>& variants)
{
    QJsonArray layerArray;
    for (const LoopLayer& layer : layers)
        layerArray.append(QJsonObject{{QStringLiteral("id"), layer.id},
                                      {QStringLiteral("rhythmId"), layer.rhythmId},
                                      {QStringLiteral("pitched"), layer.pitched}});
    QJsonArray variantArray;
    for (const LoopVariant& variant : variants)
        variantArray.append(variantJson(variant));
    const QJsonObject meter{{QStringLiteral("numerator"), rhythm.timeSignature.numerator},
                            {QStringLiteral("denominator"), rhythm.timeSignature.denominator}};
    const QJsonObject rhythmObject{{QStringLiteral("id"), rhythm.id},
                                   {QStringLiteral("timeSignature"), meter}};
    return QJsonDocument(QJsonObject{{QStringLiteral("rhythm"), rhythmObject},
                                     {QStringLiteral("loopLayers"), layerArray},
                                     {QStringLiteral("loopVariants"), variantArray}})
        .toJson();
}

/// A content root of its own in a temporary folder, filled from JSON written in the test, with
/// the libraries that read it.
class ContentFixture {
public:
    /// Folders are made only for what is added; nothing is read until reload().
    ContentFixture() : instruments_(bankRoot()), library_(root(), &instruments_)
    {
        if (!dir_.isValid() || !QDir().mkpath(root()) || !QDir().mkpath(bankRoot()))
            qFatal("No temporary folder: %s", qPrintable(dir_.errorString()));
    }

    QString root() const { return dir_.filePath(QStringLiteral("loops")); }

    /// Where recorded banks are looked for.
    QString bankRoot() const { return dir_.filePath(QStringLiteral("soundfonts")); }

    /// Any path in the temporary folder.
    QString filePath(const QString& name) const { return dir_.filePath(name); }

    InstrumentLibrary& instruments() { return instruments_; }

    LoopLibrary& library() { return library_; }

    /// Writes installed/<rhythmId>.content.json.
    void addPackage(const QString& rhythmId, const QByteArray& content)
    {
        write(root() + QStringLiteral("/installed/%1.content.json").arg(rhythmId), content);
    }

    /// Writes grooves/<rhythmId>.groove.json.
    void addGroove(const QString& rhythmId, const QByteArray& content)
    {
        write(root() + QStringLiteral("/grooves/%1.groove.json").arg(rhythmId), content);
    }

    QByteArray manifest() const { return read(root() + QStringLiteral("/manifest.json")); }

    /// Writes a file, making its folders.
    static void write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
            file.write(content) != content.size())
            qFatal("Cannot write %s", qPrintable(path));
    }

    /// The whole file; null when it cannot be opened.
    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir dir_;
    InstrumentLibrary instruments_;
    LoopLibrary library_;
};
