#include "api/MultipartReader.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr qsizetype longestBoundary = 200;
constexpr qint64 mostOverhead = 64 * 1024;    // bytes
constexpr qint64 largestRecord = 1024 * 1024; // bytes

bool isBoundary(const QByteArray &text)
{
    const auto printable = [](char c) { return c > ' ' && c < '\x7f'; };
    return !text.isEmpty() && text.size() <= longestBoundary && std::all_of(text.begin(), text.end(), printable);
}

} // namespace

MultipartReader::MultipartReader(const QByteArray &boundary, ByteSink &documentContents)
    : delimiter("\r\n--" + boundary), contents(documentContents), matched(2), // the first line needs no line break
      malformed(!isBoundary(boundary))
{
}

QByteArray MultipartReader::boundaryOf(const QByteArray &contentType)
{
    const qsizetype at = contentType.toLower().indexOf("boundary=");
    if (at < 0)
        return {};
    QByteArray boundary = contentType.mid(at + 9);
    const bool quoted = boundary.startsWith('"');
    if (quoted)
        boundary.remove(0, 1);
    const qsizetype end = boundary.indexOf(quoted ? '"' : ';');
    return boundary.left(end < 0 ? boundary.size() : end).trimmed();
}

bool MultipartReader::write(const char *bytes, qint64 count)
{
    const char *const end = bytes + count;
    while (bytes != end && state != State::End && !malformed && !refused) {
        if (state == State::Body)
            bytes = readBody(bytes, end);
        else
            readLineByte(*bytes++);
    }
    return !malformed && !refused;
}

// The delimiter holds one carriage return, its first byte. So a delimiter that turns out to be none can only begin anew
// at the byte that did not fit, and what was seen of it is known without having been kept.
const char *MultipartReader::readBody(const char *at, const char *end)
{
    if (matched == 0) {
        const auto *found = static_cast<const char *>(std::memchr(at, '\r', static_cast<size_t>(end - at)));
        take(at, (found ? found : end) - at);
        matched = found ? 1 : 0;
        return found ? found + 1 : end;
    }
    while (at != end && matched < delimiter.size() && *at == delimiter.at(matched)) {
        ++at;
        ++matched;
    }
    if (matched == delimiter.size()) {
        matched = 0;
        state = State::BoundaryLine;
    } else if (at != end) {
        take(delimiter.constData(), matched);
        matched = 0;
    }
    return at;
}

void MultipartReader::readLineByte(char byte)
{
    line += byte;
    if (++overhead > mostOverhead) {
        malformed = true;
    } else if (state == State::BoundaryLine && line == "--") {
        state = State::End;
        malformed = part != Part::Contents;
    } else if (byte == '\n') {
        endLine(line.trimmed().isEmpty());
        line.clear();
    }
}

void MultipartReader::endLine(bool blank)
{
    if (state == State::Headers) {
        state = blank ? State::Body : State::Headers;
        return;
    }
    state = State::Headers;
    malformed = !blank || part == Part::Contents;
    part = part == Part::Preamble ? Part::Record : Part::Contents;
}

void MultipartReader::take(const char *bytes, qint64 count)
{
    if (count == 0)
        return;
    switch (part) {
    case Part::Preamble:
        overhead += count;
        malformed = overhead > mostOverhead;
        break;
    case Part::Record:
        malformed = recordBytes.size() + count > largestRecord;
        if (!malformed)
            recordBytes.append(bytes, count);
        break;
    case Part::Contents:
        contentsBytes += count;
        refused = !contents.write(bytes, count);
        break;
    }
}
