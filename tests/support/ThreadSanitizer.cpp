// Part of every test program: what the thread sanitizer cannot judge, because the libraries are not built with it and
// synchronise in ways that it does not see.

#if defined(__SANITIZE_THREAD__)
extern "C" const char *__tsan_default_suppressions();

extern "C" const char *__tsan_default_suppressions()
{
    // The test library's watchdog thread, the session bus and the desktop's proxy settings live on threads of the
    // libraries' own; shared data released inside the library is counted there, unseen.
    return "race:QWaitCondition\n"
           "race:libQt6Test.so\n"
           "race:libQt6DBus.so\n"
           "race:libdbus-1.so\n"
           "race:libglib-2.0.so\n"
           "race:QByteArray::operator=(QByteArray const&)\n"
           "race:QCoreApplicationPrivate::sendPostedEvents\n"
           "race:libproxy.so\n"
           "called_from_lib:libproxy.so\n";
}
#endif
