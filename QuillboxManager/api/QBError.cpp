#include "api/QBError.h"

#include "platform/Localization.h"

using namespace Qt::StringLiterals;

struct QBError::Data {
    QString domain;
    qint64 code;
    QVariantMap userInfo;
};

QBError::QBError(const QString &domain, qint64 code, const QVariantMap &userInfo)
    : d(std::make_shared<const Data>(Data{domain, code, userInfo}))
{
}

QString QBError::domain() const
{
    return d ? d->domain : QString();
}

qint64 QBError::code() const
{
    return d ? d->code : 0;
}

QVariantMap QBError::userInfo() const
{
    return d ? d->userInfo : QVariantMap();
}

QString QBError::localizedDescription() const
{
    if (!d)
        return {};
    const QString text = d->userInfo.value(QBErrorKeys::localizedDescription()).toString();
    if (!text.isEmpty())
        return text;
    return u"%1 (%2)"_s.arg(d->domain).arg(d->code);
}

QString QBError::localizedRecoverySuggestion() const
{
    return userInfo().value(QBErrorKeys::localizedRecoverySuggestion()).toString();
}

bool QBError::needModifyPassword() const
{
    return userInfo().value(QBErrorKeys::needModifyPassword()).toBool();
}

QString QBError::lockTime() const
{
    return userInfo().value(QBErrorKeys::lockTime()).toString();
}

QString QBError::lockUser() const
{
    return userInfo().value(QBErrorKeys::lockUser()).toString();
}

QBError QBError::errorForErrorList(const QBError &error)
{
    if (error.isNull())
        return error;
    const QString text = messageForCode(error.code());
    return text.isNull() ? error : withText(serverDomain(), error.code(), text);
}

QString QBError::messageForCode(qint64 code)
{
    const QString key = QString::number(code);
    for (const QString &table : {u"Messages"_s, u"BackUpMessages"_s}) {
        const QString text = platform::localizedString(key, table);
        if (!text.isEmpty() && text != key)
            return text;
    }
    return {};
}

QString QBError::serverDomain()
{
    return u"com.velto"_s;
}

QString QBError::posixDomain()
{
    return u"NSPOSIXErrorDomain"_s;
}

QString QBError::transportDomain()
{
    return u"NSURLErrorDomain"_s;
}

QBError QBError::withText(const QString &domain, qint64 code, const QString &description,
                          const QString &recoverySuggestion)
{
    QVariantMap userInfo{{QBErrorKeys::localizedDescription(), description}};
    if (!recoverySuggestion.isNull())
        userInfo.insert(QBErrorKeys::localizedRecoverySuggestion(), recoverySuggestion);
    return QBError(domain, code, userInfo);
}
