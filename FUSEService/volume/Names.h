#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace volume
{

/// Which names programs may use, and how names of the server appear in folders. Any thread.
class Names
{
public:
    enum class Use { Shared, LocalOnly };
    /// 0 ordinary, 1 forbidden, 2 not synchronised.
    using Guard = std::function<int(const QString &)>;

    explicit Names(Guard guard) : classify(std::move(guard)) {}

    /// Text of a name a program gave. EILSEQ when it is no UTF-8, ENAMETOOLONG beyond 255 bytes.
    static QString fromProgram(const char *name);
    /// What a new document of that name is to become. EPERM for a forbidden name, EINVAL for one the server refuses.
    Use useFor(const QString &name) const;
    /// The server's name can stand in a folder.
    static bool canAppear(const QString &name);
    /// A name that can stand in a folder for one that may hold any character; null for one that has nothing to show.
    static QString displayName(const QString &name);

private:
    const Guard classify;
};

} // namespace volume
