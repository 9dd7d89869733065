#include "Database.h"

#include "ApiError.h"

#include <sqlite3.h>

#include <QFile>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
[[noreturn]] void fail(sqlite3 *handle)
{
    throw ApiError{InternalError, {}, u"storage: %1"_s.arg(QString::fromUtf8(sqlite3_errmsg(handle))), {}};
}

void bind(sqlite3_stmt *statement, int position, const QVariant &value)
{
    if (value.typeId() == QMetaType::QByteArray) {
        const QByteArray bytes = value.toByteArray();
        sqlite3_bind_blob(statement, position, bytes.constData(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    } else if (value.typeId() == QMetaType::QString) {
        const QByteArray text = value.toString().toUtf8();
        sqlite3_bind_text(statement, position, text.constData(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
    } else {
        sqlite3_bind_int64(statement, position, value.toLongLong());
    }
}

QVariant column(sqlite3_stmt *statement, int position)
{
    const int length = sqlite3_column_bytes(statement, position);
    switch (sqlite3_column_type(statement, position)) {
    case SQLITE_INTEGER:
        return qint64(sqlite3_column_int64(statement, position));
    case SQLITE_TEXT:
        return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, position)), length);
    case SQLITE_BLOB:
        return QByteArray(static_cast<const char *>(sqlite3_column_blob(statement, position)), length);
    default:
        return {};
    }
}

QVariantList row(sqlite3_stmt *statement)
{
    QVariantList values;
    for (int position = 0; position < sqlite3_column_count(statement); ++position)
        values.append(column(statement, position));
    return values;
}
} // namespace

Database::~Database()
{
    close();
}

bool Database::open(const QString &path, const char *layout, QString *error)
{
    // The file must exist with its rights before SQLite derives those of its companions from it.
    QFile file(path);
    if (!file.open(QIODevice::Append) || !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)) {
        *error = u"cannot open %1: %2"_s.arg(path, file.errorString());
        return false;
    }
    file.close();
    const int opened = sqlite3_open_v2(QFile::encodeName(path).constData(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX, nullptr);
    sqlite3_busy_timeout(handle, 5000);
    if (opened == SQLITE_OK && sqlite3_exec(handle, layout, nullptr, nullptr, nullptr) == SQLITE_OK)
        return true;
    *error = u"cannot use %1: %2"_s.arg(path, QString::fromUtf8(sqlite3_errmsg(handle)));
    close();
    return false;
}

void Database::close()
{
    const auto lock = exclusive();
    for (const auto &[text, statement] : statements)
        sqlite3_finalize(statement);
    statements.clear();
    sqlite3_close(handle);
    handle = nullptr;
}

sqlite3_stmt *Database::prepared(const char *statement)
{
    const auto known = statements.find(statement);
    if (known != statements.end())
        return known->second;
    sqlite3_stmt *made = nullptr;
    if (sqlite3_prepare_v2(handle, statement, -1, &made, nullptr) != SQLITE_OK)
        fail(handle);
    statements.emplace(statement, made);
    return made;
}

void Database::each(const char *statement, const QVariantList &values,
                    const std::function<void(const QVariantList &)> &taker)
{
    const auto lock = exclusive();
    sqlite3_stmt *ready = prepared(statement);
    for (qsizetype i = 0; i < values.size(); ++i)
        bind(ready, static_cast<int>(i) + 1, values[i]);
    int step = sqlite3_step(ready);
    for (; step == SQLITE_ROW; step = sqlite3_step(ready))
        taker(row(ready));
    sqlite3_reset(ready);
    sqlite3_clear_bindings(ready);
    if (step != SQLITE_DONE)
        fail(handle);
}

QList<QVariantList> Database::run(const char *statement, const QVariantList &values)
{
    QList<QVariantList> rows;
    each(statement, values, [&rows](const QVariantList &row) { rows.append(row); });
    return rows;
}

qint64 Database::lastId()
{
    const auto lock = exclusive();
    return sqlite3_last_insert_rowid(handle);
}

} // namespace documentserver
