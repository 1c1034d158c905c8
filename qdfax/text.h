#pragma once

#include <QCoreApplication>

/// Where the texts for people come from: Text::tr("..."). Of a table of literals, whose texts are translated
/// when they are shown, each stands in QT_TRANSLATE_NOOP("qdfax", "...").
class Text
{
    Q_DECLARE_TR_FUNCTIONS(qdfax)

public:
    /**
     * Makes everything said from now on, by qdfax, the library and Qt, be said in the language of the user,
     * if there are translations; it is English else, whose one translation has singular and plural forms. To
     * be called once, by the thread and within the life of the application.
     *
     * LC_ALL, LC_MESSAGES and LANG name the language, as they do for other programs: where they name the "C"
     * locale, everything is English, and LANGUAGE, a list in order of preference, counts only where they do
     * not.
     */
    static void useLanguageOfUser();
};
