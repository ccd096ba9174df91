#include "mib/mib_parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <variant>

#include "mib/mib_text.h"
#include "mib/name_store.h"

namespace {

// The texts without which a line means nothing. Each is searched for by a letter that is rare in MIB files,
// so that most of a file is passed over at the speed of a memory scan. The two with one such letter at one
// place are searched for together.
struct Mark {
    std::string_view text;
    std::string_view otherText;
    size_t rarest;
};
enum MarkIndex : size_t { kObject, kModuleIdentity, kAssignment, kMarkCount };
constexpr Mark kMarks[kMarkCount] = {
    {"OBJECT-TYPE", "OBJECT IDENTIFIER", 2}, {"MODULE-IDENTITY", "MODULE-IDENTITY", 4}, {"::=", "::=", 2}};

template <typename Char>
struct MibScan {
    using View = std::basic_string_view<Char>;

    View text;
    size_t position = 0;            // the start of the first line that was not taken yet
    size_t marks[kMarkCount] = {};  // where each mark stands next; npos: nowhere any more
    View line;                      // the line taken last, without its comment
    size_t lineEnd = 0;             // where that ends in the text
    View name;                      // the current name
    std::basic_string<Char> statement;
    std::wstring wideName;
    std::wstring wideStatement;
};

template <typename Char>
bool StandsAt(std::basic_string_view<Char> text, size_t position, std::string_view ascii) {
    return ascii.size() <= text.size() - position &&
           std::equal(ascii.begin(), ascii.end(), text.begin() + static_cast<std::ptrdiff_t>(position));
}

template <typename Char>
size_t FindMark(std::basic_string_view<Char> text, const Mark& mark, size_t from) {
    const auto rarest = static_cast<Char>(mark.text[mark.rarest]);
    for (size_t found = from + mark.rarest;; ++found) {
        found = text.find(rarest, found);
        if (found == text.npos) {
            return found;
        }
        const size_t start = found - mark.rarest;
        if (StandsAt(text, start, mark.text) || StandsAt(text, start, mark.otherText)) {
            return start;
        }
    }
}

// Takes the line at the position: cuts its comment off and moves behind its line feed.
template <typename Char>
void TakeLine(MibScan<Char>& scan) {
    const size_t end = std::min(scan.text.find(Char{'\n'}, scan.position), scan.text.size());
    scan.line = StripComment(scan.text.substr(scan.position, end - scan.position));
    scan.lineEnd = scan.position + scan.line.size();
    scan.position = std::min(end + 1, scan.text.size());
}

// Takes the next line that holds a mark, be it in its comment. False: there is none.
template <typename Char>
bool TakeMarkedLine(MibScan<Char>& scan) {
    for (size_t mark = 0; mark < kMarkCount; ++mark) {
        if (scan.marks[mark] < scan.position) {
            scan.marks[mark] = FindMark(scan.text, kMarks[mark], scan.position);
        }
    }
    const size_t next = *std::min_element(std::begin(scan.marks), std::end(scan.marks));
    if (next == scan.text.npos) {
        return false;
    }
    const size_t lineFeed = scan.text.substr(scan.position, next - scan.position).rfind(Char{'\n'});
    scan.position += lineFeed == scan.text.npos ? 0 : lineFeed + 1;
    TakeLine(scan);
    return true;
}

// A mark that begins in front of the comment ends there too, since none holds two dashes in a row or ends
// in one.
template <typename Char>
bool LineHolds(const MibScan<Char>& scan, MarkIndex mark) {
    return scan.marks[mark] < scan.lineEnd;
}

template <typename Char>
bool LineHolds(const MibScan<Char>& scan, char character) {
    return scan.line.find(static_cast<Char>(character)) != scan.line.npos;
}

// The value that the line starts, with the lines that it goes on in joined by blanks; empty when it does
// not end.
template <typename Char>
std::basic_string_view<Char> TakeStatement(MibScan<Char>& scan) {
    if (LineHolds(scan, '}')) {
        return scan.line;
    }
    scan.statement = scan.line;
    while (scan.position < scan.text.size()) {
        TakeLine(scan);
        scan.statement.append(1, Char{' '}).append(TrimSpace(scan.line));
        if (LineHolds(scan, '}')) {
            return scan.statement;
        }
    }
    return {};
}

std::wstring_view MakeWide(std::wstring_view text, std::wstring&) {
    return text;
}

std::wstring_view MakeWide(std::string_view ascii, std::wstring& room) {
    room.resize(ascii.size());
    std::copy(ascii.begin(), ascii.end(), room.begin());
    return room;
}

void StoreValue(std::wstring_view name, std::wstring_view statement) {
    std::wstring_view parent;
    int32_t subId = 0;
    if (ParseParentAndSubId(statement, &parent, &subId)) {
        StoreDefinition(name, parent, subId);
    } else if (const std::wstring oid = ParseOidValue(statement); !oid.empty()) {
        StoreNamedOid(name, oid);
    }
}

template <typename Char>
void TakeName(MibScan<Char>& scan) {
    if (LineHolds(scan, kObject) || LineHolds(scan, kModuleIdentity)) {
        const auto word = LeadingIdentifier(scan.line);
        scan.name = word.empty() ? scan.name : word;
    }
}

template <typename Char>
void TakeValue(MibScan<Char>& scan) {
    if (LineHolds(scan, kAssignment) && LineHolds(scan, '{')) {
        const auto statement = TakeStatement(scan);
        if (!scan.name.empty() && !statement.empty()) {
            StoreValue(MakeWide(scan.name, scan.wideName), MakeWide(statement, scan.wideStatement));
        }
    }
}

template <typename Char>
void ParseText(std::basic_string_view<Char> text) {
    MibScan<Char> scan;
    scan.text = text;
    std::transform(std::begin(kMarks), std::end(kMarks), scan.marks,
                   [&](const Mark& mark) { return FindMark(text, mark, 0); });
    while (TakeMarkedLine(scan)) {
        TakeName(scan);
        TakeValue(scan);
    }
}

}  // namespace

void ParseMibText(std::wstring_view text) {
    ParseText(text);
}

void ParseMibText(std::string_view text) {
    ParseText(text);
}

void ParseMibFile(const std::wstring& path) {
    std::visit([](const auto& text) { ParseMibText(text); }, ReadMibText(path));
}
