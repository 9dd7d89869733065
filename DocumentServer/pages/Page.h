#pragma once

#include "../Reply.h"

#include <QString>

namespace documentserver
{

/// One request for a page.
struct PageRequest {
    QString path;         ///< without query, decoded
    QByteArray query;     ///< without "?"
    QByteArray form;      ///< the body of a posted form
    QByteArray languages; ///< as in the header Accept-Language
    bool isPost = false;
};

enum class PageLanguage { Simplified, Traditional, English };

/// What the address asks for ("lang" as in "zh-cn", "zh-tw", "en-us"), else what the browser prefers, else English.
PageLanguage languageOf(const PageRequest &request);

/// One text in three languages, as UTF-8.
struct PageText {
    const char *simplified;
    const char *traditional;
    const char *english;

    QString in(PageLanguage language) const;
};

/// A whole page. The title is escaped; the body, and what goes into the head, is HTML of our own.
Reply pageWith(PageLanguage language, const QString &title, const QString &body, const QString &script = {});
Reply redirectTo(const QByteArray &location);

} // namespace documentserver
