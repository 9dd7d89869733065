#include "channel/GDUnixSocketServer.h"

void GDUnixSocketServerDelegate::unixSocketServerDidStartListening(GDUnixSocketServer &) {}

void GDUnixSocketServerDelegate::didAcceptClientWithID(GDUnixSocketServer &, const QString &) {}

void GDUnixSocketServerDelegate::didReceiveData(GDUnixSocketServer &, const QByteArray &, const QString &) {}

void GDUnixSocketServerDelegate::didFailToReadForClientID(GDUnixSocketServer &, const QString &, const QBError &) {}

void GDUnixSocketServerDelegate::clientWithIDDidDisconnect(GDUnixSocketServer &, const QString &) {}

void GDUnixSocketServerDelegate::unixSocketServerDidFailToAcceptConnection(GDUnixSocketServer &, const QBError &) {}

void GDUnixSocketServerDelegate::unixSocketServerDidClose(GDUnixSocketServer &, const QBError &) {}
