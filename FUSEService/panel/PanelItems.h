#pragma once

#include <QList>
#include <QString>

#include <optional>

/// What the companion lets a panel show: one line each. Values; any thread.
struct PanelItem {
    QString name;
    QString folder; ///< full path; opened when the line is chosen
    QString state;  ///< name of a state that the panel knows, or empty

    bool operator==(const PanelItem &other) const = default;
};

struct PanelList {
    QList<PanelItem> items;
    bool isComplete = true; ///< false: there may be more, which could not be had

    bool operator==(const PanelList &other) const = default;
};

/// The file between companion and panel, in a folder for the user alone.
namespace PanelItems
{

constexpr qsizetype maximumBytes = 4 * 1024 * 1024;

/// A file with fewer items, and so incomplete, when they would not fit. False when it cannot be written.
bool write(const QString &path, const PanelList &list);
/// Nothing while there is no complete file.
std::optional<PanelList> read(const QString &path);

// States.
QString waiting(); ///< not on the server yet

} // namespace PanelItems
