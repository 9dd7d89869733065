#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// An absolute http or https address as it goes over the wire: percent-encoded, the host in its ASCII form.
class WireAddress
{
public:
    /// Nothing when the text is no such address. Ordinary addresses are recognised without taking them apart, which
    /// would cost a tenth of a call.
    static std::optional<WireAddress> of(const QString &text);

    const QByteArray &bytes() const { return encoded; }
    /// Scheme, user information, host and port: what is before the path. Points into this object.
    QByteArrayView server() const { return QByteArrayView(encoded).first(serverLength); }

private:
    WireAddress(const QByteArray &address, qsizetype length) : encoded(address), serverLength(length) {}

    QByteArray encoded;
    qsizetype serverLength;
};
