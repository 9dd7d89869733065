#pragma once

#include "api/ByteSink.h"

#include <QByteArray>

/// Takes a reply of two parts apart while it arrives, in pieces of any size: a record, which is kept, and a document's
/// contents, which go straight on. Headers of the parts are passed over.
class MultipartReader : public ByteSink
{
public:
    /// `contents` outlives it. A boundary that cannot be one is malformed from the start.
    MultipartReader(const QByteArray &boundary, ByteSink &contents);

    /// The text after "boundary=", null when there is none.
    static QByteArray boundaryOf(const QByteArray &contentType);

    /// False when the bytes are malformed or the contents were refused.
    bool write(const char *bytes, qint64 count) override;

    bool isMalformed() const { return malformed; }
    /// Both parts came, to the closing boundary; what follows it is passed over.
    bool isComplete() const { return state == State::End && part == Part::Contents; }
    QByteArray record() const { return recordBytes; }
    qint64 contentsSize() const { return contentsBytes; }

private:
    enum class State { Body, BoundaryLine, Headers, End };
    enum class Part { Preamble, Record, Contents };

    const char *readBody(const char *at, const char *end);
    void readLineByte(char byte);
    void endLine(bool blank);
    void take(const char *bytes, qint64 count);

    const QByteArray delimiter; ///< "\r\n--" and the boundary
    ByteSink &contents;
    State state = State::Body;
    Part part = Part::Preamble;
    qsizetype matched = 0; ///< bytes of the delimiter that were just seen
    QByteArray line;
    qint64 overhead = 0; ///< bytes of preamble and headers
    QByteArray recordBytes;
    qint64 contentsBytes = 0;
    bool malformed = false;
    bool refused = false;
};
