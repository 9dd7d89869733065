#include "volume/ErrnoMap.h"

#include "api/TransportError.h"

#include <cerrno>
#include <iterator>

namespace volume
{
namespace
{

struct Row {
    qint64 code;
    int number;
};

constexpr Row serverRows[] = {
    {400002, EINVAL}, // illegal parameter
    {400012, EINVAL}, // illegal name
    {401001, EACCES}, // token
    {403001, EDQUOT}, // quota
    {403002, EACCES}, // permission
    {403031, EBUSY},  // locked by somebody else
    {403039, EEXIST}, // name taken
    {403070, EFBIG},  // size limit
    {403155, EPERM},  // outbox
    {403171, EROFS},  // user frozen
    {403172, EROFS},  // document frozen
    {403175, EBUSY},  // locked, while moving
    {403176, EBUSY},  // something below is locked
    {403179, EACCES}, // user not authenticated
    {403180, EACCES}, // document not authenticated
    {403181, EPERM},  // type banned
    {403182, EPERM},  // type banned for renaming
    {404006, ENOENT}, // gone
    {413001, EFBIG},  // body too large
};

int errnoForServerCode(qint64 code)
{
    for (const Row &row : serverRows)
        if (row.code == code)
            return row.number;
    // The leading digits are the HTTP status: they still tell refusals from faults.
    switch (code / 1000) {
    case 401:
    case 403:
        return EACCES;
    case 404:
        return ENOENT;
    default:
        return EIO;
    }
}

} // namespace

int errnoForError(const QBError &error)
{
    if (error.isNull())
        return 0;
    if (error.domain() == QBError::serverDomain())
        return errnoForServerCode(error.code());
    if (error.domain() == QBError::posixDomain() && error.code() > 0 && error.code() < 4096)
        return static_cast<int>(error.code());
    return EIO;
}

} // namespace volume
