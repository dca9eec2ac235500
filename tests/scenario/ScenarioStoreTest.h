#pragma once

#include "scenario/ScenarioSamples.h"
#include "support/WatchedTest.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// A store in a file of its own, and values to keep in it: the same ones in every run.
class ScenarioStoreTest : public WatchedTest
{
protected:
    void buildStore()
    {
        beginWatch();
        constexpr quint32 seed = 20'240'229;
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
        m_fileName = m_home->filePath(QStringLiteral("store.conf"));
        m_random.seed(seed);
    }
    void removeStore()
    {
        m_home.reset();
        endWatch();
    }
    std::unique_ptr<QSettings> openStore() const
    {
        return std::make_unique<QSettings>(m_fileName, QSettings::IniFormat);
    }
    QByteArray fileContent() const
    {
        QFile file(m_fileName);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    ScenarioValues sample() { return randomValues(m_random); }

    QString m_fileName;

private:
    std::unique_ptr<QTemporaryDir> m_home;
    QRandomGenerator m_random;
};
