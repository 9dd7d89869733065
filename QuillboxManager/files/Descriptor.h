#pragma once

#include <QJsonObject>
#include <QString>

/// Typed readers of a document or folder as the server describes it. The description itself is kept and passed on as it
/// came, so that fields unknown here survive. Any thread.
///
/// A text that is missing or of another type is null. A number may come as a numeric text; anything else reads as 0.
namespace Descriptor
{

qint64 type(const QJsonObject &document); ///< kind of the item, in the server's numbers
QString name(const QJsonObject &document);
QString rev(const QJsonObject &document); ///< revision of the content
/// Category of an entry document, 1 to 5 as in QBPathIndicator::categoryNameWithType; 0 for none of these.
qint64 docType(const QJsonObject &document);
qint64 attrbute(const QJsonObject &document); ///< bits as sent
QString identifier(const QJsonObject &document);
qint64 size(const QJsonObject &document);         ///< bytes
qint64 modifiedTime(const QJsonObject &document); ///< in the server's unit of time
qint64 clientTime(const QJsonObject &document);   ///< as told by the client that uploaded it, in the same unit
QString docname(const QJsonObject &document);     ///< for display, null when there is none
QString otag(const QJsonObject &document);        ///< tag of the item's content version

/// A copy with a slash for every backslash, null for an empty name.
QString formatDocName(const QString &name);

} // namespace Descriptor
