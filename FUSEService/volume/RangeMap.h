#pragma once

#include <QtGlobal>

#include <map>
#include <optional>
#include <utility>

namespace volume
{

/// A set of byte positions, kept as ranges that neither touch nor overlap. Not for several threads at once.
class RangeMap
{
public:
    /// Adds [begin, end).
    void add(qint64 begin, qint64 end);
    /// Takes out everything from `position` on.
    void cut(qint64 position);
    /// The first part of [begin, end) that is not in the set; nothing when all of it is.
    std::optional<std::pair<qint64, qint64>> firstGap(qint64 begin, qint64 end) const;
    std::size_t rangeCount() const { return ranges.size(); }

private:
    std::map<qint64, qint64> ranges; ///< begin → end
};

} // namespace volume
