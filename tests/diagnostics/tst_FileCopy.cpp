#include "diagnostics/FileCopy.h"
#include "support/OrdinaryUser.h"
#include "support/WatchedTest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

class tst_FileCopy : public WatchedTest
{
    Q_OBJECT

private slots:
    void init()
    {
        beginWatch();
        m_folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup()
    {
        m_folder.reset();
        endWatch();
    }
    void whole_data();
    void whole();
    void endOfALongOne_data();
    void endOfALongOne();
    void notRead_data();
    void notRead();
    void forbidden();
    void failingRead();

private:
    QString path(const QString& name = QStringLiteral("file")) const { return m_folder->filePath(name); }
    bool write(const QByteArray& content) const
    {
        QFile file(path());
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileCopy::whole_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("one line") << QByteArray("a\n");
    QTest::newRow("no line end") << QByteArray("a\nb");
    QTest::newRow("carriage returns") << QByteArray("a\r\nb\r\n");
    QTest::newRow("as long as it may be") << QByteArray(99, 'x') + '\n';
}

void tst_FileCopy::whole()
{
    QFETCH(QByteArray, content);
    QVERIFY(write(content));
    const FileCopy copy = copyOfFile(path(), 100);
    QVERIFY(copy.isRead);
    QCOMPARE(copy.content, content);
    QCOMPARE(copy.remark, QString());
    QCOMPARE(copy.modified, QFileInfo(path()).lastModified());
}

void tst_FileCopy::endOfALongOne_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("copied");
    QTest::newRow("from a line's start") << QByteArray("first\nsecond\nthird\n") << QByteArray("third\n");
    QTest::newRow("one line too long") << QByteArray("0123456789abcdef") << QByteArray("6789abcdef");
    QTest::newRow("one byte too long") << QByteArray("01234\n6789\n") << QByteArray("6789\n");
}

void tst_FileCopy::endOfALongOne()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, copied);
    QVERIFY(write(content));
    const FileCopy copy = copyOfFile(path(), 10);
    QVERIFY(copy.isRead);
    QCOMPARE(copy.content, copied);
    QCOMPARE(copy.remark, QStringLiteral("only the end of its %1 bytes").arg(content.size()));
}

void tst_FileCopy::notRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("remark");
    QTest::newRow("nothing") << QStringLiteral("none") << QStringLiteral("not there");
    QTest::newRow("folder") << QStringLiteral("folder") << QStringLiteral("not a file");
    QTest::newRow("link") << QStringLiteral("link") << QStringLiteral("not a file");
    QTest::newRow("link to nowhere") << QStringLiteral("dangling") << QStringLiteral("not a file");
    QTest::newRow("pipe") << QStringLiteral("pipe") << QStringLiteral("not a file");
    QTest::newRow("below a file") << QStringLiteral("file/a") << QStringLiteral("not there");
}

void tst_FileCopy::notRead()
{
    QFETCH(QString, name);
    QFETCH(QString, remark);
    QVERIFY(write("secret"));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(QFile::link(path(), path(QStringLiteral("link"))));
    QVERIFY(QFile::link(path(QStringLiteral("none")), path(QStringLiteral("dangling"))));
    QCOMPARE(mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0600), 0);
    const FileCopy copy = copyOfFile(path(name), 100);
    QVERIFY(!copy.isRead);
    QCOMPARE(copy.content, QByteArray());
    QCOMPARE(copy.remark, remark);
}

void tst_FileCopy::forbidden()
{
    QVERIFY(write("secret"));
    const OrdinaryUser user(path(), 0);
    if (!user.isEffective()) {
        QTest::qSkip("The system does not let go of the rights", __FILE__, __LINE__);
        return;
    }
    const FileCopy copy = copyOfFile(path(), 100);
    QVERIFY(!copy.isRead);
    QCOMPARE(copy.content, QByteArray());
    QCOMPARE(copy.remark, QStringLiteral("Permission denied"));
}

void tst_FileCopy::failingRead()
{
    // It can be opened, but nothing is mapped where it begins.
    const QString memory = QStringLiteral("/proc/self/mem");
    if (!QFile::exists(memory)) {
        QTest::qSkip("There is no file here that opens and cannot be read", __FILE__, __LINE__);
        return;
    }
    const FileCopy copy = copyOfFile(memory, 100);
    QVERIFY(!copy.isRead);
    QCOMPARE(copy.content, QByteArray());
    QVERIFY(!copy.remark.isEmpty());
}

QTEST_MAIN(tst_FileCopy)
#include "tst_FileCopy.moc"
