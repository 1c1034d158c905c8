#pragma once

#include <QCoreApplication>

/// User-visible texts: Text::tr("..."). In a table of literals, which are translated when shown, each is
/// marked by QT_TRANSLATE_NOOP("qdfax", "...").
class Text
{
    Q_DECLARE_TR_FUNCTIONS(qdfax)

public:
    /**
     * Translates all later texts of qdfax, the library and Qt into the language of the user, if there are
     * translations; otherwise texts are English, whose translation only has singular and plural forms. To be
     * called once, on the thread and within the lifetime of the application object.
     *
     * LC_ALL, LC_MESSAGES and LANG determine the language, as usual: in the "C" locale everything is English,
     * and LANGUAGE, a list in order of preference, is used only in other locales.
     */
    static void useLanguageOfUser();
};
