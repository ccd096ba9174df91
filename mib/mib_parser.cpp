#include "mib/mib_parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <variant>

#include "mib/mib_text.h"
#include "mib/name_store.h"

namespace {

// The texts without which a line means nothing. Each is searched for by its rarest letter, so that most of a
// file is passed over at the speed of a memory scan.
struct Mark {
    std::string_view text;
    size_t rarest;
};
enum MarkIndex : size_t { kObjectType, kObjectIdentifier, kModuleIdentity, kAssignment, kMarkCount };
constexpr Mark kMarks[kMarkCount] = {
    {"OBJECT-TYPE", 2}, {"OBJECT IDENTIFIER", 2}, {"MODULE-IDENTITY", 3}, {"::=", 0}};

template <typename Char>
struct MibScan {
    using View = std::basic_string_view<Char>;

    View text;
    size_t position = 0;            // the start of the first line that was not taken yet
    size_t marks[kMarkCount] = {};  // where each mark stands next, once looked for; npos: nowhere any more
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
        if (found == text.npos || StandsAt(text, found - mark.rarest, mark.text)) {
            return found == text.npos ? found : found - mark.rarest;
        }
    }
}

// Moves on to the start of the next line that holds a mark. False: there is none.
template <typename Char>
bool GoToMarkedLine(MibScan<Char>& scan, bool first) {
    for (size_t mark = 0; mark < kMarkCount; ++mark) {
        if (first || scan.marks[mark] < scan.position) {
            scan.marks[mark] = FindMark(scan.text, kMarks[mark], scan.position);
        }
    }
    const size_t next = *std::min_element(std::begin(scan.marks), std::end(scan.marks));
    if (next == scan.text.npos) {
        return false;
    }
    const size_t lineFeed = scan.text.substr(scan.position, next - scan.position).rfind(Char{'\n'});
    scan.position += lineFeed + 1;  // npos + 1: already there
    return true;
}

// The line at the position, without its comment; moves behind its line feed. A carriage return stays as space.
template <typename Char>
std::basic_string_view<Char> TakeLine(MibScan<Char>& scan) {
    const size_t end = std::min(scan.text.find(Char{'\n'}, scan.position), scan.text.size());
    const auto line = scan.text.substr(scan.position, end - scan.position);
    scan.position = std::min(end + 1, scan.text.size());
    return StripComment(line);
}

// The value that `line` starts, with the lines that it goes on in joined by blanks.
template <typename Char>
std::basic_string_view<Char> TakeStatement(MibScan<Char>& scan, std::basic_string_view<Char> line) {
    if (line.find(Char{'}'}) != line.npos) {
        return line;
    }
    scan.statement = line;
    while (scan.position < scan.text.size() && line.find(Char{'}'}) == line.npos) {
        line = TrimSpace(TakeLine(scan));
        scan.statement.append(1, Char{' '}).append(line);
    }
    return scan.statement;
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
void ParseText(std::basic_string_view<Char> text) {
    MibScan<Char> scan;
    scan.text = text;
    for (bool first = true; GoToMarkedLine(scan, first); first = false) {
        const size_t start = scan.position;
        const auto line = TakeLine(scan);
        const auto holds = [&](MarkIndex mark) {
            return scan.marks[mark] <= start + line.size() &&
                   kMarks[mark].text.size() <= start + line.size() - scan.marks[mark];
        };
        if (holds(kObjectType) || holds(kObjectIdentifier) || holds(kModuleIdentity)) {
            const auto word = LeadingIdentifier(line);
            scan.name = word.empty() ? scan.name : word;
        }
        if (holds(kAssignment) && line.find(Char{'{'}) != line.npos) {
            const auto statement = TakeStatement(scan, line);
            if (!scan.name.empty()) {
                StoreValue(MakeWide(scan.name, scan.wideName), MakeWide(statement, scan.wideStatement));
            }
        }
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
