#include "volume/RangeMap.h"

#include <algorithm>

namespace volume
{

void RangeMap::add(qint64 begin, qint64 end)
{
    if (begin >= end)
        return;
    auto next = ranges.upper_bound(begin);
    if (next != ranges.begin()) {
        const auto before = std::prev(next);
        if (before->second >= begin) {
            begin = before->first;
            end = std::max(end, before->second);
            ranges.erase(before);
        }
    }
    while (next != ranges.end() && next->first <= end) {
        end = std::max(end, next->second);
        next = ranges.erase(next);
    }
    ranges.emplace(begin, end);
}

void RangeMap::cut(qint64 position)
{
    ranges.erase(ranges.lower_bound(position), ranges.end());
    if (!ranges.empty())
        ranges.rbegin()->second = std::min(ranges.rbegin()->second, position);
}

std::optional<std::pair<qint64, qint64>> RangeMap::firstGap(qint64 begin, qint64 end) const
{
    auto next = ranges.upper_bound(begin);
    if (next != ranges.begin())
        begin = std::max(begin, std::prev(next)->second);
    if (begin >= end)
        return std::nullopt;
    return std::pair(begin, next == ranges.end() ? end : std::min(end, next->first));
}

} // namespace volume
