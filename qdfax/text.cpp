#include "text.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QStringList>
#include <QTranslator>

namespace {

bool isUntranslated(const QByteArray& locale)
{
    const QByteArray name = locale.left(locale.indexOf('.'));
    return name == "C" || name == "POSIX";
}

/// What the environment names for messages, "" where that is left to the system.
QByteArray localeOfMessages()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QByteArray value = qgetenv(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

/// Whether there was a file @p name for @p locale in @p folder. It is in use from then on.
bool use(const QLocale& locale, const QString& name, const QString& folder)
{
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(locale, name, QStringLiteral("_"), folder))
        return QCoreApplication::installTranslator(translator);
    delete translator;
    return false;
}

} // namespace

void Text::useLanguageOfUser()
{
    const auto resources = QStringLiteral(":/translations");
    // "1 contact", not "1 contacts"; where a translation is installed after it, that is asked first
    use(QLocale(QLocale::English), QStringLiteral("qdfax"), resources);
    // Qt takes LANGUAGE from whoever asks for the "C" locale, too: that would translate what scripts read
    if (isUntranslated(localeOfMessages()))
        return;
    const QStringList languages = QLocale::system().uiLanguages();
    for (const QString& language : languages) {
        const QLocale locale(language);
        // the language of the sources
        if (locale.language() == QLocale::English || locale.language() == QLocale::C)
            return;
        if (use(locale, QStringLiteral("qdfax"), resources)) {
            use(locale, QStringLiteral("qdcore"), resources);
            use(locale, QStringLiteral("qtbase"), QLibraryInfo::location(QLibraryInfo::TranslationsPath));
            return;
        }
    }
}
