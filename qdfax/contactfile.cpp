#include "contactfile.h"

#include "parsing.h"
#include "text.h"

#include <QSet>
#include <QTextCodec>

#include <algorithm>

#ifdef QDFAX_WITH_VCARDS
#include <KContacts/Addressee>
#include <KContacts/VCardConverter>
#endif
#include <csv.h>

namespace {

struct Column
{
    const char* name;
    void (Contact::*set)(const QString&);
    const QString& (Contact::*get)() const;
    // cppcheck-suppress unusedStructMember ; rows are written by position
    QStringList others; ///< Other programs' names for it. In lower case, without blanks and punctuation.
};

const QVector<Column>& columns()
{
    const auto words = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char(' ')); };
    static const QVector<Column> all = {
        {"name", &Contact::setName, &Contact::name, words("fullname displayname contact contactname fn")},
        {"organization", &Contact::setOrganization, &Contact::organization,
         words("organisation company companyname org organization1name")},
        {"phone", &Contact::setPhone, &Contact::phone,
         words("phonenumber telephone tel businessphone workphone primaryphone phone1value")},
        {"fax", &Contact::setFax, &Contact::fax, words("faxnumber businessfax workfax telefax")},
        {"email", &Contact::setEmail, &Contact::email, words("emailaddress mail primaryemail email1value")}};
    return all;
}

/// A column's title, normalised: differences between programs removed.
QString plain(const QString& title)
{
    QString letters;
    const QString lower = title.toLower();
    for (const QChar c : lower) {
        if (c.isLetterOrNumber())
            letters += c;
    }
    return letters;
}

/// Completes an entry: adds a missing name, and sets the problem if a field cannot be sent.
void check(ContactFile::Entry& entry)
{
    Contact& contact = entry.contact;
    for (const Column& column : columns()) {
        const QString text = (contact.*column.get)().trimmed();
        QString error;
        if (!checkText(text, false, &error) && entry.problem.isEmpty())
            entry.problem = Text::tr("the field \"%1\" %2").arg(QLatin1String(column.name), error);
        (contact.*column.set)(text);
    }
    if (contact.name().isEmpty())
        contact.setName(contact.organization());
    if (contact.name().isEmpty() && entry.problem.isEmpty())
        entry.problem = Text::tr("it has neither a name nor an organization");
}

bool isUtf8(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

/// Lines with their ends, which are those of any system.
QVector<QByteArray> linesOf(const QByteArray& bytes)
{
    QVector<QByteArray> lines;
    int start = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        const bool isLoneReturn = bytes.at(i) == '\r' && (i + 1 == bytes.size() || bytes.at(i + 1) != '\n');
        if (bytes.at(i) == '\n' || isLoneReturn) {
            lines.append(bytes.mid(start, i + 1 - start));
            start = i + 1;
        }
    }
    if (start < bytes.size())
        lines.append(bytes.mid(start));
    return lines;
}

/// Converts the bytes to UTF-8 without a byte order mark. False, with the problem, for another encoding.
bool toUtf8(QByteArray& bytes, QString* problem)
{
    const QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    const QTextCodec* codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("UTF-8"));
    if (codec->mibEnum() != utf8->mibEnum())
        bytes = codec->toUnicode(bytes).toUtf8();
    if (bytes.startsWith("\xef\xbb\xbf"))
        bytes.remove(0, 3);
    if (isUtf8(bytes))
        return true;
    const QVector<QByteArray> lines = linesOf(bytes);
    const auto bad =
        std::find_if(lines.cbegin(), lines.cend(), [](const auto& line) { return !isUtf8(line); });
    *problem = Text::tr("line %1 is not UTF-8; save the file as UTF-8").arg(bad - lines.cbegin() + 1);
    return false;
}

/// The separator of a table, detected from its titles.
unsigned char separatorOf(const QByteArray& titles)
{
    const char candidates[] = {',', ';', '\t'};
    return static_cast<unsigned char>(
        *std::max_element(std::begin(candidates), std::end(candidates),
                          [&titles](char a, char b) { return titles.count(a) < titles.count(b); }));
}

/// The records of a table, each with the line it begins in.
class TableReader
{
public:
    struct Record
    {
        int line;
        QStringList fields;
    };

    explicit TableReader(unsigned char separator)
    {
        csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI);
        csv_set_delim(&m_parser, separator);
    }
    ~TableReader() { csv_free(&m_parser); }
    Q_DISABLE_COPY(TableReader)

    bool read(const QVector<QByteArray>& lines, QString* problem)
    {
        for (int i = 0; i < lines.size(); ++i) {
            const QByteArray& line = lines.at(i);
            if (m_isBetween && !line.trimmed().isEmpty()) {
                m_current = {i + 1, {}};
                m_isBetween = false;
            }
            const auto size = static_cast<size_t>(line.size());
            if (csv_parse(&m_parser, line.constData(), size, takeField, takeRecord, this) != size) {
                *problem = Text::tr("line %1 has a quote in the wrong place; a field with quotes is put in "
                                    "quotes, and each quote in it is doubled")
                               .arg(i + 1);
                return false;
            }
        }
        if (csv_fini(&m_parser, takeField, takeRecord, this) == 0)
            return true;
        *problem =
            Text::tr("a quote in the record that begins in line %1 is never closed").arg(m_current.line);
        return false;
    }

    const QVector<Record>& records() const { return m_records; }

private:
    static void takeField(void* field, size_t size, void* reader)
    {
        static_cast<TableReader*>(reader)->m_current.fields.append(
            QString::fromUtf8(static_cast<const char*>(field), static_cast<int>(size)));
    }
    static void takeRecord(int, void* self)
    {
        auto* reader = static_cast<TableReader*>(self);
        reader->m_records.append(reader->m_current);
        reader->m_current.fields.clear();
        reader->m_isBetween = true;
    }

    csv_parser m_parser;
    QVector<Record> m_records;
    Record m_current{0, {}};
    bool m_isBetween{true};
};

/// Maps the fields of a record to columns.
struct Layout
{
    QVector<int> fields; ///< The index in columns(), -1 for none of them.
    int firstName{-1};
    int lastName{-1};
    QStringList unused;
};

Layout layoutOf(const QStringList& titles)
{
    Layout layout;
    layout.fields.fill(-1, titles.size());
    QSet<int> found;
    for (int i = 0; i < titles.size(); ++i) {
        const QString title = plain(titles.at(i));
        for (int c = 0; c < columns().size() && layout.fields.at(i) < 0; ++c) {
            const bool matches =
                title == QLatin1String(columns().at(c).name) || columns().at(c).others.contains(title);
            if (matches && !found.contains(c)) {
                layout.fields[i] = c;
                found.insert(c);
            }
        }
        if (layout.fields.at(i) >= 0)
            continue;
        if (title == QLatin1String("firstname") || title == QLatin1String("givenname"))
            layout.firstName = i;
        else if (title == QLatin1String("lastname") || title == QLatin1String("familyname"))
            layout.lastName = i;
        else
            layout.unused.append(titles.at(i));
    }
    return layout;
}

} // namespace

// --- CSV

ContactFile ContactFile::readCsv(const QByteArray& bytes)
{
    ContactFile file;
    QByteArray text = bytes;
    if (!toUtf8(text, &file.problem))
        return file;
    const QVector<QByteArray> lines = linesOf(text);
    const auto titleLine = std::find_if(lines.cbegin(), lines.cend(),
                                        [](const auto& line) { return !line.trimmed().isEmpty(); });
    if (titleLine == lines.cend()) {
        file.problem = Text::tr("it is empty");
        return file;
    }
    TableReader reader(separatorOf(*titleLine));
    if (!reader.read(lines, &file.problem))
        return file;

    const QStringList titles = reader.records().first().fields;
    const Layout layout = layoutOf(titles);
    if (!layout.fields.contains(0) && !layout.fields.contains(1) && layout.firstName < 0 &&
        layout.lastName < 0) {
        file.problem =
            Text::tr("its first line does not name the columns. Expected are name, "
                     "organization, phone, fax, email, of which name or organization must be there");
        return file;
    }
    file.unusedColumns = layout.unused;
    const auto records = reader.records().mid(1);
    for (const TableReader::Record& record : records) {
        Entry entry;
        entry.line = record.line;
        for (int i = 0; i < std::min(record.fields.size(), titles.size()); ++i) {
            if (layout.fields.at(i) >= 0)
                (entry.contact.*columns().at(layout.fields.at(i)).set)(record.fields.at(i));
        }
        if (entry.contact.name().isEmpty()) {
            entry.contact.setName((record.fields.value(layout.firstName) + QLatin1Char(' ') +
                                   record.fields.value(layout.lastName))
                                      .trimmed());
        }
        if (record.fields.size() != titles.size()) {
            entry.problem =
                Text::tr("it has %n fields, and the first line names %1", "", record.fields.size())
                    .arg(titles.size());
        }
        check(entry);
        file.entries.append(entry);
    }
    return file;
}

QByteArray ContactFile::writeCsv(const QVector<Contact>& contacts)
{
    QByteArray text;
    const auto append = [&text](const QByteArray& field, char before) {
        const auto size = static_cast<size_t>(field.size());
        QByteArray quoted(static_cast<int>(csv_write(nullptr, 0, field.constData(), size)), '\0');
        csv_write(quoted.data(), static_cast<size_t>(quoted.size()), field.constData(), size);
        if (before)
            text += before;
        text += quoted;
    };
    for (const Column& column : columns())
        append(column.name, &column == &columns().first() ? '\0' : ',');
    text += "\r\n";
    for (const Contact& contact : contacts) {
        for (const Column& column : columns())
            append((contact.*column.get)().toUtf8(), &column == &columns().first() ? '\0' : ',');
        text += "\r\n";
    }
    return text;
}

// --- vCards

#ifdef QDFAX_WITH_VCARDS

namespace {

bool isLine(const QByteArray& line, const char* wanted)
{
    return line.trimmed().toUpper() == wanted;
}

/// Syntax errors of a card. The parser silently skips anything that it does not understand.
QString cardProblem(const QVector<QByteArray>& lines)
{
    bool isContinued = false;
    bool isForeign = false;
    for (const QByteArray& line : lines) {
        const bool isFolded = line.startsWith(' ') || line.startsWith('\t');
        const QByteArray text = line.trimmed();
        if (!isFolded && !isContinued && !text.isEmpty() && !text.contains(':'))
            return Text::tr("\"%1\" is not a line of a vCard").arg(QString::fromUtf8(text.left(40)));
        isContinued = text.endsWith('=') && (isContinued || text.toUpper().contains("QUOTED-PRINTABLE"));
        isForeign = isForeign || text.toUpper().contains("CHARSET=");
        const QByteArray upper = text.toUpper();
        if (upper == "KIND:GROUP" || upper == "X-ADDRESSBOOKSERVER-KIND:GROUP")
            return Text::tr("it is a group, and groups are not imported");
    }
    const bool isText = isForeign || std::all_of(lines.cbegin(), lines.cend(), isUtf8);
    return isText ? QString() : Text::tr("it is not UTF-8");
}

Contact contactOf(const KContacts::Addressee& card)
{
    using Phone = KContacts::PhoneNumber;
    Contact contact;
    contact.setName(card.formattedName().isEmpty() ? card.assembledName() : card.formattedName());
    contact.setOrganization(card.organization());
    contact.setEmail(card.preferredEmail());
    // of several prefer work, and among those the one marked as preferred
    int bestFax = -1;
    int bestPhone = -1;
    const auto phones = card.phoneNumbers();
    for (const Phone& phone : phones) {
        const bool isFax = phone.type() & Phone::Fax;
        const int rank = ((phone.type() & Phone::Work) ? 2 : 0) + ((phone.type() & Phone::Pref) ? 1 : 0);
        if ((phone.type() & (Phone::Pager | Phone::Modem)) && !isFax)
            continue;
        int& best = isFax ? bestFax : bestPhone;
        if (rank <= best || phone.number().trimmed().isEmpty())
            continue;
        best = rank;
        if (isFax)
            contact.setFax(phone.number());
        else
            contact.setPhone(phone.number());
    }
    return contact;
}

} // namespace

bool ContactFile::knowsVcards()
{
    return true;
}

ContactFile ContactFile::readVcards(const QByteArray& bytes)
{
    ContactFile file;
    const QVector<QByteArray> lines = linesOf(bytes.startsWith("\xef\xbb\xbf") ? bytes.mid(3) : bytes);
    const KContacts::VCardConverter converter;
    QVector<QByteArray> card;
    Entry entry;
    const auto refuse = [&file](int line, const QString& problem) {
        Entry bad;
        bad.line = line;
        bad.problem = problem;
        file.entries.append(bad);
    };
    const QString unended = Text::tr("the card has no END:VCARD");
    bool isFound = false;
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray& line = lines.at(i);
        if (isLine(line, "BEGIN:VCARD")) {
            if (!card.isEmpty())
                refuse(entry.line, unended);
            isFound = true;
            card.clear();
            entry = Entry();
            entry.line = i + 1;
        } else if (card.isEmpty()) {
            if (!line.trimmed().isEmpty())
                refuse(i + 1, Text::tr("it is outside of any card"));
            continue;
        }
        card.append(line);
        if (!isLine(line, "END:VCARD"))
            continue;
        entry.problem = cardProblem(card);
        if (entry.problem.isEmpty()) {
            QByteArray text;
            for (const QByteArray& part : qAsConst(card))
                text += part;
            const KContacts::Addressee::List read = converter.parseVCards(text);
            if (read.size() == 1)
                entry.contact = contactOf(read.first());
            else
                entry.problem = Text::tr("it cannot be understood");
        }
        check(entry);
        file.entries.append(entry);
        card.clear();
    }
    if (!card.isEmpty())
        refuse(entry.line, unended);
    if (!isFound) {
        file.entries.clear();
        file.problem = Text::tr("there is no vCard in it");
    }
    return file;
}

QByteArray ContactFile::writeVcards(const QVector<Contact>& contacts, const QStringList& uids)
{
    using Phone = KContacts::PhoneNumber;
    const KContacts::VCardConverter converter;
    QByteArray text;
    for (int i = 0; i < contacts.size(); ++i) {
        const Contact& contact = contacts.at(i);
        KContacts::Addressee card;
        card.setUid(uids.value(i));
        card.setFormattedName(contact.name());
        // a card also requires the name's parts; the last word is taken as the family name
        const int blank = contact.name().lastIndexOf(QLatin1Char(' '));
        card.setGivenName(contact.name().left(std::max(blank, 0)));
        card.setFamilyName(contact.name().mid(blank + 1));
        card.setOrganization(contact.organization());
        if (!contact.phone().isEmpty())
            card.insertPhoneNumber(Phone(contact.phone(), Phone::Work | Phone::Voice));
        if (!contact.fax().isEmpty())
            card.insertPhoneNumber(Phone(contact.fax(), Phone::Work | Phone::Fax));
        if (!contact.email().isEmpty())
            card.addEmail(KContacts::Email(contact.email()));
        text += converter.exportVCard(card, KContacts::VCardConverter::v3_0);
    }
    return text;
}

#else

bool ContactFile::knowsVcards()
{
    return false;
}

ContactFile ContactFile::readVcards(const QByteArray&)
{
    ContactFile file;
    file.problem = Text::tr("this qdfax was built without vCards; use a table, a file that ends in .csv");
    return file;
}

QByteArray ContactFile::writeVcards(const QVector<Contact>&, const QStringList&)
{
    return QByteArray();
}

#endif
