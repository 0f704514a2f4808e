#pragma once

#include <QList>
#include <QString>

#include <array>
#include <string_view>
#include <tuple>

/// The fields of records, each spelt once: what writes a record and what reads it go through the
/// same list, so that neither can know a field that the other does not.
namespace Records {

/// A member, and the key that files have for it.
template <typename Record, typename Value>
struct Field {
    QLatin1StringView key;
    Value Record::*member;
};

template <typename Record, typename Value>
Field(QLatin1StringView, Value Record::*) -> Field<Record, Value>;

/// A member that stands in files as a word. A text that is none of its words, or no text at all, is
/// read as what `fromWord` makes of it.
template <typename Record, typename Value>
struct WordField {
    QLatin1StringView key;
    Value Record::*member;
    QString (*toWord)(Value);
    Value (*fromWord)(const QString&);
};

template <typename Record, typename Value>
WordField(QLatin1StringView, Value Record::*, QString (*)(Value), Value (*)(const QString&))
    -> WordField<Record, Value>;

/// A member that is a list of records.
template <typename Record, typename Element>
struct ListField {
    QLatin1StringView key;
    QList<Element> Record::*member;
    /// Makes an element, as it is where the file leaves something out.
    Element (*fresh)() = [] { return Element(); };
};

template <typename Record, typename Element, typename... Fresh>
ListField(QLatin1StringView, QList<Element> Record::*, Fresh...) -> ListField<Record, Element>;

/// A record's fields in the order of their keys, which is that of the files. A list out of order,
/// or with a key twice, does not compile.
template <typename... Fields>
struct FieldList {
    std::tuple<Fields...> fields;

    consteval FieldList(Fields... all) : fields{all...}
    {
        const std::array keys{
            std::string_view(all.key.data(), static_cast<std::size_t>(all.key.size()))...};
        for (std::size_t i = 1; i < keys.size(); ++i) {
            if (keys[i] <= keys[i - 1])
                throw "The keys of a record stand in ascending order.";
        }
    }
};

/// The fields of a record: specialised with a FieldList beside whoever knows its files.
template <typename Record>
constexpr std::nullptr_t kFields = nullptr;

} // namespace Records
