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

/// The locale of messages in the environment, "" if it is not set.
QByteArray localeOfMessages()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QByteArray value = qgetenv(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

/// Installs the translation @p name for @p locale in @p folder; false if there is none.
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
    // "1 contact", not "1 contacts"; a translation installed later takes precedence
    use(QLocale(QLocale::English), QStringLiteral("qdfax"), resources);
    // Qt uses LANGUAGE in the "C" locale too: that would translate output that scripts parse
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
