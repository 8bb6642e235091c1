#include "codec/FinderInfo.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDataStream>

// A file's Finder type, from its extended attribute or its AppleDouble sidecar.
namespace korvane {
namespace {

using B = PluginLibraryBuilder;

// An AppleDouble header with the given entries (id, offset, length), then `tail`.
QByteArray appleDouble(const QList<std::array<quint32, 3>> &entries, const QByteArray &tail,
                       int count = -1)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(0x00051607) << quint32(0x00020000) << quint64(0) << quint64(0)
        << quint16(count < 0 ? entries.size() : count);
    for (const auto &[id, offset, length] : entries)
        out << id << offset << length;
    return bytes + tail;
}

class FinderInfoTest : public TestRoots {};

TEST_F(FinderInfoTest, TypeFromAttributeOrSidecarAndNoneFromMalformedSidecars)
{
    const QString folder = homePath("VST");
    const QString file = B::makeFile(folder, "Plug");
    const QByteArray info = QByteArray("TDMw") + QByteArray(28, '\0');
    const QByteArray good = appleDouble({{9, 38, 32}}, info);
    QByteArray badMagic = good;
    badMagic[3] = 0x00;
    const QList<QByteArray> cases = {
        QByteArray(),
        badMagic,
        good.left(20),                            // header cut short
        good.left(30),                            // entry cut short
        good.left(40),                            // Finder info cut short
        appleDouble({{9, 38, 32}}, info, 0xFFFE), // far more entries than bytes
        appleDouble({{9, 0xFFFFFFF0, 32}}, info), // offset beyond the file
        appleDouble({{9, 38, 0xFFFFFFFF}}, info), // length beyond the file
        appleDouble({{9, 38, 2}}, info),          // too short to hold a type
        appleDouble({{2, 38, 32}}, info),         // no Finder info entry
    };
    for (qsizetype i = 0; i < cases.size(); ++i) {
        writeText(folder + "/._Plug", cases[i]);
        EXPECT_TRUE(FinderInfo::hfsTypeString(file).isEmpty()) << "case " << i;
        // The reader of the bytes in memory refuses what the reader of the file does.
        EXPECT_FALSE(FinderInfo::typeFromAppleDouble(cases[i])) << "case " << i;
    }
    // The well-formed sidecar, and one whose Finder info follows a resource-fork entry.
    const QByteArray afterFork = appleDouble({{2, 50, 4}, {9, 54, 32}}, "rsrc" + info);
    for (const QByteArray &sidecar : {good, afterFork}) {
        writeText(folder + "/._Plug", sidecar);
        EXPECT_EQ(FinderInfo::hfsTypeString(file), "'TDMw'");
        EXPECT_EQ(FinderInfo::typeFromAppleDouble(sidecar), 0x54444D77u);
    }
}

} // namespace
} // namespace korvane
