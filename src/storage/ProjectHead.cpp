#include "storage/ProjectHead.h"

#include "files/JsonFile.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <string_view>

using namespace Qt::Literals::StringLiterals;
using namespace std::string_view_literals;

namespace {

constexpr qint64 kStep = 64 * 1024;

/// A hundred hours.
constexpr double kLongestSeconds = 360000.0;

/// Longer words are neither a key nor a title that anybody could read.
constexpr qsizetype kLongestWord = 64 * 1024;

/// Whether a byte may stand before a document: space, or a part of a byte order mark.
bool isLead(char byte)
{
    return " \t\r\n\xEF\xBB\xBF"sv.find(byte) != std::string_view::npos;
}

/// Walks over the bytes of a document as they come, until the value of the outermost key "name" is
/// known.
class TitleFinder {
public:
    /// False when there is nothing more to learn.
    bool take(char byte)
    {
        if (inWord_)
            return takeInWord(byte);
        if (byte == '"') {
            inWord_ = true;
            word_ = "\"";
        } else if (byte == '{' || byte == '[') {
            return open(byte);
        } else if (byte == '}' || byte == ']') {
            return --depth_ > 0;
        } else if (depth_ == 0 && !isLead(byte)) {
            return false;
        } else if (depth_ == 1 && byte == ':') {
            atTitle_ = word_ == "\"name\"";
        } else if (depth_ == 1 && byte == ',') {
            return !atTitle_;
        }
        return true;
    }

    bool isObject() const { return isObject_; }

    const std::optional<QString>& title() const { return title_; }

private:
    bool open(char bracket)
    {
        if (depth_++ > 0)
            return true;
        isObject_ = bracket == '{';
        return isObject_;
    }

    bool takeInWord(char byte)
    {
        if (word_.size() < kLongestWord)
            word_.append(byte);
        inWord_ = escaped_ || byte != '"';
        escaped_ = !escaped_ && byte == '\\';
        if (inWord_ || depth_ != 1 || !atTitle_)
            return true;
        title_ = QJsonDocument::fromJson('[' + word_ + ']')[0].toString();
        return false;
    }

    int depth_ = 0;
    bool isObject_ = false;
    bool inWord_ = false;
    bool escaped_ = false;
    bool atTitle_ = false;
    /// The last text of the document, as it is written there.
    QByteArray word_;
    std::optional<QString> title_;
};

bool endsLikeAnObject(QFile& file)
{
    file.seek(std::max<qint64>(0, file.size() - kStep));
    return file.read(kStep).trimmed().endsWith('}');
}

std::optional<ProjectHead> headOfLarge(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > ProjectHead::kMaxFileBytes)
        return std::nullopt;
    TitleFinder finder;
    const auto take = [&](char byte) { return finder.take(byte); };
    while (!file.atEnd() && std::ranges::all_of(file.read(kStep), take)) {
    }
    if (!finder.isObject() || !endsLikeAnObject(file))
        return std::nullopt;
    return ProjectHead{.name = finder.title(), .song = std::nullopt};
}

double secondsOf(const Project& work)
{
    const double seconds = work.bpm > 0 ? work.endBeat() * 60.0 / work.bpm : 0.0;
    return seconds >= 0.0 && seconds < kLongestSeconds ? seconds : 0.0;
}

ProjectHead headOf(const QJsonObject& json)
{
    const QJsonValue name = json["name"_L1];
    Project work;
    work.loadJson(json);
    return {.name = name.isString() ? std::optional(name.toString()) : std::nullopt,
            .song = SongFacts{work.timeSignature, work.keySignature, secondsOf(work),
                              ProjectEdits::firstRhythm(work)}};
}

} // namespace

std::optional<ProjectHead> ProjectHead::read(const QString& path)
{
    const QFileInfo info(path);
    if (info.isFile() && info.size() > kParsedWhole)
        return headOfLarge(path);
    const auto json = JsonFile::readObject(path, kParsedWhole);
    return json ? std::optional(headOf(*json)) : std::nullopt;
}
