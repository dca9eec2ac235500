#pragma once

#include "ArchiveFolder.h"
#include "support/WatchedTest.h"
#include "update/ArchiveExtractor.h"

/// What the tests of archives share.
class ArchiveTest : public WatchedTest
{
protected:
    static void requirePacker()
    {
        QVERIFY2(!ReleaseArchive::packer().isEmpty(), "Debian's 7zip is not installed");
    }
    /// The status; one that does not exist where the extractor's result says otherwise.
    static quint16 extract(const ArchiveFolder& folder)
    {
        ArchiveExtractor extractor;
        extractor.setArchive(folder.archive());
        const bool done = extractor.extract();
        return done == (extractor.status() == 0) ? extractor.status() : quint16(0xffff);
    }
};
