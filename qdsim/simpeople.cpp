#include "simpeople.h"

namespace {

const char* const firstNames[] = {
    "Anna", "Boris",  "Clara", "David", "Elena",      "Felix",         "Greta",
    "Hugo", "Irene",  "Jonas", "Karin", "Lukas",      "Maria",         "Nils",
    "Olga", "Pavel",  "Quinn", "Rosa",  "Simon",      "Tanja",         "Ulrich",
    "Vera", "Walter", "Xenia", "Yusuf", "Zo\xc3\xab", "J\xc3\xbcrgen", "Fran\xc3\xa7ois",
};
const char* const lastNames[] = {
    "Abel",  "Brandt", "Castell", "Dorn",    "Eklund",  "Fischer",       "Grau",
    "Holm",  "Ivanov", "Jansen",  "Keller",  "Lorenz",  "Marek",         "Novak",
    "Olsen", "Peters", "Quandt",  "Richter", "Sommer",  "Thal",          "Ulmer",
    "Vogel", "Winter", "Young",   "Zander",  "O'Neill", "M\xc3\xbcller", "\xc5\x9awit",
};
const char* const trades[] = {"Shipping", "Insurance", "Timber", "Optics",
                              "Printing", "Pharmacy",  "Law",    "Travel"};
const char* const forms[] = {"Ltd.", "& Sons", "GmbH", "Inc.", "Partners", "Co."};
const char* const departments[] = {"Sales",      "Accounting", "Purchasing", "Branch offices", "Suppliers",
                                   "Pharmacies", "Doctors",    "Lawyers",    "Board",          "Field staff"};

template <size_t size>
QString pick(SimPeople& people, const char* const (&words)[size])
{
    return QString::fromUtf8(words[people.below(static_cast<int>(size))]);
}

} // namespace

int SimPeople::below(int count)
{
    return count > 0 ? static_cast<int>(m_random() % static_cast<quint32>(count)) : 0;
}

SimPerson SimPeople::person()
{
    const QString first = pick(*this, firstNames);
    const QString last = pick(*this, lastNames);
    SimPerson person;
    person.name = first + QLatin1Char(' ') + last;
    person.organization = pick(*this, lastNames) + QLatin1Char(' ');
    person.organization += pick(*this, trades) + QLatin1Char(' ');
    person.organization += pick(*this, forms);
    person.fax = faxNumber();
    if (below(3) > 0)
        person.phone = faxNumber();
    if (below(4) > 0)
        person.email = QStringLiteral("%1.%2@example.com")
                           .arg(first.toLower(), last.toLower().remove(QLatin1Char('\'')));
    return person;
}

QString SimPeople::groupName()
{
    const QString department = pick(*this, departments);
    return department + QStringLiteral(" %1").arg(1 + below(99));
}

QString SimPeople::faxNumber()
{
    QString number = QStringLiteral("+%1").arg(30 + below(60));
    for (int i = 0; i < 9; ++i)
        number += QChar::fromLatin1(static_cast<char>('0' + below(10)));
    return number;
}
