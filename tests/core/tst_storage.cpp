#include "diskdataprovider.h"
#include "iquendrastorage.h"
#include "quendrastorage.h"
#include "shorthand.h"
#include "xmlguard_p.h"

#include <QDir>
#include <QDomDocument>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

namespace {

/// Stores one text and remembers how it was called.
class Note : public IQuendraStorage
{
public:
    bool readStorage(const QDomElement& element, int protocolVersion) override
    {
        ++reads;
        version = protocolVersion;
        root = element.isNull() ? QString() : element.tagName();
        text = element.firstChildElement(s("note")).text();
        return answer;
    }

    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override
    {
        version = protocolVersion;
        QDomElement note = document.createElement(s("note"));
        note.appendChild(document.createTextNode(text));
        parent.appendChild(note);
        return answer;
    }

    QString text;
    QString root;
    bool answer{true};
    int reads{0};
    mutable int version{0};
};

} // namespace

class TestStorage : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_path = m_dir.filePath(s("settings.xml"));

    void write(const QByteArray& content) { writeFile(m_path, content); }
    QByteArray content() const { return readFile(m_path); }

private Q_SLOTS:
    void init() { QFile::remove(m_path); }

    void savesAndLoads()
    {
        Note note;
        note.text = s("a <b> & \"c\"");
        write(QByteArray(5000, 'x'));
        QVERIFY(QuendraStorage(m_path).Save(note));
        QCOMPARE(note.version, 1);
        QCOMPARE(content(), QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<settings>\n <note>a "
                                       "&lt;b> &amp; \"c\"</note>\n</settings>\n"));

        Note read;
        read.answer = false;
        QVERIFY(!QuendraStorage(m_path).Load(read));
        QCOMPARE(read.reads, 1);
        QCOMPARE(read.version, 1);
        QCOMPARE(read.root, s("settings"));
        QCOMPARE(read.text, note.text);
    }

    void filesThatCannotBeUsed()
    {
        Note note;
        QVERIFY(!QuendraStorage(m_path).Load(note) && !QuendraStorage(m_dir.path()).Load(note));
        QCOMPARE(note.reads, 0);
        QVERIFY(!QuendraStorage(m_dir.path()).Save(note));
        QVERIFY(!QuendraStorage(m_dir.filePath(s("no folder/settings.xml"))).Save(note));
        write("kept");
        note.answer = false;
        QVERIFY(!QuendraStorage(m_path).Save(note));
        QCOMPARE(content(), QByteArray("kept"));

        note.answer = true;
        QuendraStorage full{QString()};
        full.setFilename(s("/dev/full"));
        if (!QFile::exists(full.filename()))
            QSKIP("Needs a device that is always full.");
        for (int size : {0, 100000}) {
            note.text = QString(size, QLatin1Char('x'));
            QVERIFY(!full.Save(note));
        }
    }

    void damagedFileReadsAsEmpty()
    {
        const QByteArray deep = QByteArray("<a>").repeated(100000) + QByteArray("</a>").repeated(100000);
        QList<QByteArray> files = {
            "",
            QByteArray("\0\xff no markup", 12),
            "<settings><note>half</note><server>",
            "<settings><note>n</note>" + deep + "</settings>", // for which no stack is enough
            "<settings><!-- > -->" + deep + "</settings>",
            QByteArray("<settings>\0", 11) + deep + "</settings>",
            "<settings><note>n</note></settings><more/>",
            "<!DOCTYPE settings [<!ENTITY e \"n\">]><settings><note>&e;</note></settings>"};
        if (QTextCodec::codecForName("UTF-7")) // elsewhere it is plain text
            files << "<?xml version=\"1.0\" encoding=\"utf-7\"?><settings>" +
                         QByteArray("+ADw-a+AD4-").repeated(100000) +
                         QByteArray("+ADw-/a+AD4-").repeated(100000) + "</settings>";
        for (const QByteArray& file : qAsConst(files)) {
            write(file);
            Note note;
            note.text = s("before");
            QVERIFY(QuendraStorage(m_path).Load(note));
            QCOMPARE(note.reads, 1);
            QVERIFY2(note.root.isNull() && note.text.isEmpty(), file.left(60));
        }
    }

    void endTagsAreNoNodes()
    {
        QVERIFY(isFitForDom(s("<a></a>").repeated(maxXmlNodes)));
        QVERIFY(!isFitForDom(s("<a></a>").repeated(maxXmlNodes + 1)));
    }

    void folderIsMadeOnce()
    {
        // Backslashes are what the variable holds on Windows; they stay.
        const QByteArray root = m_dir.path().toUtf8() + "/a\\b";
        const QByteArray before = qgetenv("APPDATA");
        qputenv("APPDATA", root);
        const QString& path = QuendraStorage::getAppStoragePath();
        QCOMPARE(path, QString::fromUtf8(root) + s("/Quendra Client Software/Settings"));
        QVERIFY(QDir(path).exists());
        qputenv("APPDATA", before);
        QCOMPARE(&QuendraStorage::getAppStoragePath(), &path);
        QVERIFY(path.startsWith(m_dir.path()));
    }

    void diskFileInBase64()
    {
        // more than is read at once, with both letters that the URL alphabet has otherwise
        const QByteArray bytes = QByteArray(400000, '\xfb') + "\xff?";
        for (const QByteArray& content : {QByteArray(), QByteArray("\xff?"), bytes}) {
            write(content);
            DiskDataProvider provider;
            QVERIFY(provider.toBase64().isEmpty());
            provider.setFileName(m_path);
            QCOMPARE(provider.toBase64(), QString::fromLatin1(content.toBase64()));
            QVERIFY(content.size() < 3 || provider.toBase64().startsWith(s("+/v7")));
            QVERIFY(QFile::remove(m_path));
            QVERIFY(provider.toBase64().isEmpty());
            provider.setFileName(m_dir.path());
            QVERIFY(provider.toBase64().isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestStorage)
#include "tst_storage.moc"
