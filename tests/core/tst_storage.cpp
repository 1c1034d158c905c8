#include "diskdataprovider.h"
#include "iquendrastorage.h"
#include "quendrastorage.h"
#include "shorthand.h"

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

    void missingFileIsNotRead()
    {
        Note note;
        QVERIFY(!QuendraStorage(m_path).Load(note));
        QVERIFY(!QuendraStorage(m_dir.path()).Load(note));
        QCOMPARE(note.reads, 0);
    }

    void damagedFileReadsAsEmpty_data()
    {
        const Rows<QByteArray> row("file");
        row("empty", QByteArray());
        row("no XML", QByteArray("\0\xff no markup", 12));
        row("cut off", "<settings><note>half</note><server>");
        row("deep as no stack", "<settings><note>n</note>" + QByteArray("<a>").repeated(100000) +
                                    QByteArray("</a>").repeated(100000) + "</settings>");
        if (QTextCodec::codecForName("UTF-7")) // elsewhere it is plain text
            row("deep behind an encoding", "<?xml version=\"1.0\" encoding=\"utf-7\"?><settings>" +
                                               QByteArray("+ADw-a+AD4-").repeated(100000) +
                                               QByteArray("+ADw-/a+AD4-").repeated(100000) + "</settings>");
        row("deep behind a null byte", QByteArray("<settings>\0", 11) + QByteArray("<a>").repeated(100000) +
                                           QByteArray("</a>").repeated(100000) + "</settings>");
        row("something after the end", "<settings><note>n</note></settings><more/>");
    }
    void damagedFileReadsAsEmpty()
    {
        QFETCH(QByteArray, file);
        write(file);
        Note note;
        note.text = s("before");
        QVERIFY(QuendraStorage(m_path).Load(note));
        QCOMPARE(note.reads, 1);
        QVERIFY(note.root.isNull());
        QVERIFY(note.text.isEmpty());
    }

    void refusedSaveLeavesTheFile()
    {
        write("kept");
        Note note;
        note.answer = false;
        QVERIFY(!QuendraStorage(m_path).Save(note));
        QCOMPARE(content(), QByteArray("kept"));
    }

    void saveThatCannotWriteFails()
    {
        Note note;
        QVERIFY(!QuendraStorage(m_dir.path()).Save(note));
        QuendraStorage storage(m_dir.filePath(s("no folder/settings.xml")));
        QVERIFY(!storage.Save(note));
        storage.setFilename(s("/dev/full"));
        if (!QFile::exists(storage.filename()))
            QSKIP("Needs a device that is always full.");
        QVERIFY(!storage.Save(note));
        note.text = QString(100000, QLatin1Char('x'));
        QVERIFY(!storage.Save(note));
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
        DiskDataProvider provider;
        QVERIFY(provider.toBase64().isEmpty());
        provider.setFileName(m_path);
        QVERIFY(provider.toBase64().isEmpty());
        write("");
        QVERIFY(provider.toBase64().isEmpty());
        // More than a line of base64, with both letters that the URL alphabet has otherwise.
        write(QByteArray(70, '\xfb') + "\xff?");
        QString expected;
        for (int i = 0; i < 23; ++i)
            expected += s("+/v7");
        QCOMPARE(provider.toBase64(), expected + s("+/8/"));
        provider.setFileName(m_dir.path());
        QVERIFY(provider.toBase64().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestStorage)
#include "tst_storage.moc"
