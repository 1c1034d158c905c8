#include "faxentry.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QtTest>

static QString joined(const QStringList& texts)
{
    return texts.join(QLatin1Char('|'));
}

/// What the logs say of a fax: of one that waits, of one that was sent and of one that came.
class EntriesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useBerlinTime(); }

    void entryState()
    {
        const std::pair<const char*, int> states[] = {
            {"", 0},         {"preprocessing", 1}, {"pending", 2},
            {"sending", 3},  {"sent", 4},          {"complete", 5},
            {"aborted", 6},  {"failed", 7},        {"approval_pending", 8},
            {"rejected", 9}, {"Sent", 4},          {"REJECTED", 9},
            {"queued", 0},   {" sent", 0}};
        for (const auto& [text, state] : states) {
            FaxEntry queued;
            InboundFaxEntry received;
            OutboundFaxEntry sent;
            for (BaseFaxEntry* entry : std::initializer_list<BaseFaxEntry*>{&queued, &received, &sent}) {
                QVERIFY(readFax(*entry, s("<state>failed</state><status>failed</status>")));
                QCOMPARE(int(entry->state()), 7);
                QVERIFY(readFax(*entry, tag("state", text) + tag("status", text)));
                QVERIFY2(int(entry->state()) == state, text);
                QCOMPARE(writtenFax(*entry), s("refused"));
            }
            QCOMPARE(received.status(), s(text));
        }
    }

    void entryDates()
    {
        const QDateTime november(QDate(2026, 11, 15), QTime(14, 30, 5));
        QCOMPARE(QDateTime::fromString(s("2026-11-15T14:30:05"), s("yyyy-MM-ddThh:mm:ss")), november);
        // Whatever the text, ours must be what Qt reads, by whichever way.
        for (const char* text : {"2026-11-15T14:30:05",  "2024-02-29T00:00:00",
                                 "1900-01-01T12:00:00",  "",
                                 "2026-02-29T00:00:00",  "2026-13-01T00:00:00",
                                 "2026-11-15T24:00:00",  "2026-11-15T23:59:60",
                                 "2026-11-15 14:30:05",  "2026-11-15t14:30:05",
                                 "2026-11-15T14:30:05Z", "2026-11-15T4:30:05",
                                 "yyyy-MM-ddThh:mm:ss",  "2026-11-15T14:30:0\u0665",
                                 "2026-03-29T02:30:00",  "2026-11-15T+4:30:05",
                                 "2026-11-15T 4:30:05",  "+026-11-15T14:30:05",
                                 "-026-11-15T14:30:05",  "0000-01-01T00:00:00",
                                 "0001-01-01T00:00:00",  "1893-03-31T23:59:00",
                                 "2026-11-15T14:30:5 ",  "2026-11-15T14:30:05.5"}) {
            const QDateTime expected = QDateTime::fromString(s(text), s("yyyy-MM-ddThh:mm:ss"));
            FaxEntry queued;
            QVERIFY(readFax(queued, tag("created", text) + tag("stime", "2026-11-15T14:30:05")));
            InboundFaxEntry received;
            QVERIFY(readFax(received, tag("complete_time", text)));
            OutboundFaxEntry sent;
            QVERIFY(readFax(sent, tag("start_time", "2026-11-15T14:30:05") + tag("end_time", text)));
            for (const QDateTime& read : {queued.createTime(), received.completeTime(), sent.sentAt()}) {
                QVERIFY2(read == expected && read.isNull() == expected.isNull() &&
                             read.isValid() == expected.isValid() && read.timeSpec() == Qt::LocalTime,
                         text);
            }
            QCOMPARE(queued.changeStateTime(), november);
            QCOMPARE(sent.startTime(), november);
        }
    }

    void pageCount()
    {
        // one more with a cover, however many
        const std::tuple<const char*, const char*, int> counts[] = {
            {"3", "1", 4},    {"3", "2", 4}, {"3", "0", 3},          {"3", "-1", 3},
            {"3", "true", 3}, {"", "1", 1},  {"9999999999", "0", 0}, {"2147483647", "1", 2147483647}};
        for (const auto& [pages, used, count] : counts) {
            const QString xml = tag("pages", pages) + tag("cover_page_used", used);
            OutboundFaxEntry sent;
            QVERIFY(readFax(sent, xml));
            QCOMPARE(sent.pages(), count);
            const bool enabled = s(used).toInt() > 0;
            QCOMPARE(sent.coverPage().enabled(), enabled);
            FaxEntry queued;
            QVERIFY(readFax(queued, xml + tag("cover_page", tag("enabled", enabled ? "true" : ""))));
            QCOMPARE(queued.pages(), count);
            InboundFaxEntry received;
            QVERIFY(readFax(received, xml));
            QCOMPARE(received.pages(), s(pages).toInt());
        }
    }

    void statusEntry()
    {
        FaxEntry entry;
        const QString xml =
            tag("fax_entry_url", "https://h/ofax/1 2") +
            elements("agent=a preview=http://h/p priority=5 max_tries=2 fax_page_size=a4 name=not_sender") +
            tag("sender", elements("name=s username=u user_url=https://h/u")) +
            tag("recipient", elements("name=r fax_number=5")) +
            tag("cover_page", elements("enabled=true subject=about"));
        QVERIFY(readFax(entry, xml));
        // Only the address of a contact is taken down to http.
        QCOMPARE(entry.url(), entry.entryUrl());
        QCOMPARE(
            joined({entry.entryUrl().toString(QUrl::FullyEncoded), entry.previewUrl().toString(),
                    entry.agent(), entry.from().name(), entry.from().user(), entry.from().url().toString(),
                    entry.to().name(), entry.recipient(), entry.subject()}),
            s("https://h/ofax/1%202|http://h/p|a|s|u|http://h/u|r|r, 5|about"));
        QCOMPARE(int(entry.schedule().priority()), 5);
        QCOMPARE(entry.schedule().maxTries(), 2);
        QCOMPARE(int(entry.schedule().faxPageSize()), 3);
        QVERIFY(entry.sentAt().isNull());
    }

    void outboundEntry()
    {
        OutboundFaxEntry entry;
        const QString fields = elements(
            "recipient_name=rn recipient_phone=rp recipient_fax=rf recipient_organization=ro sender_email=se "
            "sender_phone=sp sender_fax=sf sender_organization=so subject=sub agent=a username=u comments=c "
            "cover_page_name=cn fax_entry_url=http://h/1 preview=http://h/2");
        const auto spelled = [&entry] {
            return joined({entry.recepientName(), entry.recepientPhone(), entry.recepientFax(),
                           entry.recepientOrganization(), entry.senderName(), entry.senderEmail(),
                           entry.senderPhone(), entry.senderFax(), entry.senderOrganization(),
                           entry.subject(), entry.agent(), entry.username(), entry.coverPage().comments(),
                           entry.coverPage().name(), entry.coverPage().subject(), entry.entryUrl().toString(),
                           entry.previewUrl().toString(), entry.recipient()});
        };
        QVERIFY(readFax(entry, fields + tag("sender_name", "sn")));
        QCOMPARE(spelled(),
                 s("rn|rp|rf|ro|sn|se|sp|sf|so|sub|a|u|c|cn|sub|http://h/1|http://h/2|rn, rf, ro"));
        // Everything that is missing is emptied, also in an entry that is read again.
        QVERIFY(readFax(entry, elements("sender_fax=f recipient_fax=9")));
        QCOMPARE(spelled(), s("||9|||||f||||||||||9"));
        QVERIFY(readFax(entry, elements("recipient_name=n recipient_organization=o")));
        QCOMPARE(entry.recipient(), s("n, o"));

        Sender sender;
        QVERIFY(!readFax(sender, fields));
        QCOMPARE(sender.email(), s("se"));
        QVERIFY(readFax(*std::make_unique<Recepient>(), QString()));
    }

    void inboundEntry()
    {
        InboundFaxEntry entry;
        const QString xml = elements("filename=f location=https://h/a%20b pages=2 recipient_name=r error=no "
                                     "remote_id=id channel=c modem=m extension=x") +
                            tag("delivery_error", elements("error=e")) +
                            tag("delivered_to", elements("destination=d1 type=email")) +
                            tag("delivered_to", elements("type=printer"));
        const auto spelled = [&entry] {
            return joined({entry.filename(), entry.location().toString(QUrl::FullyEncoded), entry.toName(),
                           entry.error(), entry.remoteId(), entry.channel(), entry.modem(), entry.extension(),
                           entry.deliveredTo(), entry.deliveredType(), entry.deliveredDestination(),
                           QString::number(entry.pages())});
        };
        QVERIFY(readFax(entry, xml));
        QCOMPARE(spelled(), s("f|https://h/a%20b|r|e|id|c|m|x|email: d1|email|d1|2"));
        QVERIFY(entry.entryUrl().isEmpty());
        QCOMPARE(entry.recipient(), QString());

        // an error counts only within "delivery_error"
        QVERIFY(readFax(entry, tag("error", "no")));
        QCOMPARE(spelled(), s("|||||||||||0"));
        QVERIFY(entry.completeTime().isNull());
    }

    void deliveredTo()
    {
        // types and destinations in turn; the last type without one is cut
        const std::pair<const char*, const char*> lists[] = {{"email,x", "email: x"},
                                                             {",x", "x"},
                                                             {"printer,", "print"},
                                                             {"p,", ""},
                                                             {",", ""},
                                                             {"email,x,printer,", "email: x; print"},
                                                             {"printer,,email,x", "printeremail: x"}};
        for (const auto& [pairs, line] : lists) {
            const QStringList texts = s(pairs).split(QLatin1Char(','));
            QVector<DeliveredTo::Delivery> deliveries;
            for (int i = 0; i < texts.size(); i += 2)
                deliveries.append({texts.at(i), texts.at(i + 1)});
            DeliveredTo record;
            QVERIFY(readFax(record, QString()));
            record.setDeliveries(deliveries);
            InboundFaxEntry entry;
            entry.setDeliveredTo(record);
            QCOMPARE(entry.deliveredTo(), s(line));
            QVERIFY(readFax(entry,
                            tag("delivered_to", tag("type", texts.at(0)) + tag("destination", texts.at(1)))));
            if (texts.size() == 2)
                QCOMPARE(entry.deliveredTo(), s(line));
            QCOMPARE(entry.deliveredType(), texts.at(0));
            QCOMPARE(entry.deliveredDestination(), texts.at(1));
        }
    }
};
QTEST_GUILESS_MAIN(EntriesTest)
#include "tst_entries.moc"
