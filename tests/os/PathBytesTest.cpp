#include "os/PathBytes.h"
#include "codec/Bundle.h"
#include "codec/FinderInfo.h"
#include "codec/MachOHeader.h"
#include "os/LocalFileOperations.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QScopeGuard>

#include <sys/stat.h>

namespace korvane {
namespace {

// Each a name some file system may hold: well-formed UTF-8 of every length, and the malformed
// kinds (a lone continuation byte, a cut sequence, an overlong form, an encoded surrogate, values
// past U+10FFFF, bytes no sequence starts with).
const QList<QByteArray> kNames{
    "plain",
    "Caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x8e\xb9",
    "Bad\xef\xbf\xbd\xef\xbf\xbd", // U+FFFD written out: a valid name
    "Bad\xff\xfe",
    "\x80lead",
    "cut \xe2\x82",
    "cut at the end \xf0\x9f\x8e",
    "overlong \xc0\xaf and \xe0\x80\xaf",
    "surrogate \xed\xa0\x80\xed\xb2\x80",
    "too high \xf4\x90\x80\x80 \xf5\x80\x80\x80",
    "\xe2\x82\xe2\x82\xac",
};

class PathBytesTest : public TestRoots {};

TEST_F(PathBytesTest, EveryNameComesBackAsItsBytesAndNoTwoNamesMeet)
{
    QSet<QString> decoded;
    for (const QByteArray &name : kNames) {
        const QString text = pathFromBytes(name);
        EXPECT_EQ(pathBytes(text), name) << name.toHex().toStdString();
        decoded.insert(text);
    }
    EXPECT_EQ(decoded.size(), kNames.size());
    // Valid UTF-8 reads as its characters, so names typed or saved as text still match.
    EXPECT_EQ(pathFromBytes(kNames[1]), QString::fromUtf8(kNames[1]));
    EXPECT_EQ(pathFromBytes(kNames[2]), QString::fromUtf8(kNames[2]));

    // Shown with a replacement character per escaped byte; a real pair stays.
    EXPECT_EQ(displayName(pathFromBytes("Bad\xff\xfe.vst")), QString::fromUtf8(kNames[2]) + ".vst");
    EXPECT_EQ(displayName(pathFromBytes(kNames[1])), pathFromBytes(kNames[1]));
    // A lone surrogate that no decoding made cannot be said in bytes, and is not taken for one.
    EXPECT_EQ(pathBytes(QString(QChar(0xD800))), "\xef\xbf\xbd");
    EXPECT_EQ(pathBytes(QString(QChar(0xDC10))), "\xef\xbf\xbd");
}

// The disk's side: listing hands the name over as escapes, and every call takes it back to the
// same bytes, including reading a plug-in's Info.plist, executable and Finder type.
TEST_F(PathBytesTest, ANameThatIsNotUtf8IsListedReadAndMovedByItsBytes)
{
    using B = PluginLibraryBuilder;
    const QString folder = root() + "/Plug-Ins";
    const QString off = root() + "/Off";
    // The temporary folders' own clean-up decodes names as Qt does, and would leave these.
    const auto cleanUp = qScopeGuard([&] {
        for (const QString &made : {folder, off, home() + "/.local/share/Trash"})
            disk().remove(made);
    });
    const QByteArray bad = QFile::encodeName(folder) + "/Bad\xff\xfe.vst";
    const QByteArray twin = QFile::encodeName(folder) + "/Bad\xef\xbf\xbd\xef\xbf\xbd.vst";
    ASSERT_EQ(::rename(QFile::encodeName(B::makeVST(folder, "a.vst", MachO::intel())), bad), 0);
    ASSERT_EQ(::rename(QFile::encodeName(B::makeVST(folder, "b.vst", MachO::ppc())), twin), 0);
    const QString file = B::makeFile(folder, "c", {}, "plain");
    const QByteArray badFile = QFile::encodeName(folder) + "/File\xff";
    ASSERT_EQ(::rename(QFile::encodeName(file), badFile), 0);

    const QStringList names = disk().directoryContents(folder);
    ASSERT_EQ(names.size(), 3);
    const QString badName = folder + "/" + names.filter("File").value(0);
    const QString badBundle = folder + "/" + pathFromBytes("Bad\xff\xfe.vst");
    EXPECT_TRUE(names.contains(pathFromBytes("Bad\xff\xfe.vst")));
    EXPECT_EQ(Bundle::executableName(badBundle), "Plugin");
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(Bundle::executablePath(badBundle))),
              MachOHeader::Intel);
    ASSERT_TRUE(FinderInfo::setFileType(badName, 0x61506373));
    EXPECT_EQ(FinderInfo::fileType(badName), 0x61506373u);

    ASSERT_TRUE(disk().createDirectory(off));
    ASSERT_TRUE(disk().move(badBundle, off + "/" + pathFromBytes("Bad\xff\xfe.vst")));
    struct stat info;
    EXPECT_EQ(::lstat((QFile::encodeName(off) + "/Bad\xff\xfe.vst").constData(), &info), 0);
    EXPECT_EQ(::lstat(twin.constData(), &info), 0); // the twin stays
    EXPECT_NE(::lstat(bad.constData(), &info), 0);
    EXPECT_TRUE(disk().moveToTrash(badName));
    EXPECT_NE(::lstat(badFile.constData(), &info), 0);
}

} // namespace
} // namespace korvane
