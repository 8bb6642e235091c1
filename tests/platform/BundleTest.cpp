#include "platform/Bundle.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

namespace korvane {
namespace {

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

class BundleTest : public TestRoots {};

TEST_F(BundleTest, InfoPlistReadsInBothForms)
{
    const QString folder = rootPath("Library/Audio/Plug-Ins/VST");
    const QString xml = PluginLibraryBuilder::makeVST(folder, "Xml.vst", MachO::intel());
    const QString binary = PluginLibraryBuilder::makeVST(folder, "Bin.vst", MachO::ppc(), PluginLibraryBuilder::Binary);
    ASSERT_TRUE(QFile(binary + "/Contents/Info.plist").open(QIODevice::ReadOnly));

    for (const QString &bundle : {xml, binary}) {
        EXPECT_TRUE(Bundle::canOpen(bundle));
        EXPECT_EQ(Bundle::infoValue(bundle, "CFBundleExecutable").toString(), "Plugin");
        EXPECT_EQ(Bundle::executablePath(bundle), bundle + "/Contents/MacOS/Plugin");
        EXPECT_FALSE(Bundle::infoValue(bundle, "NoSuchKey").isValid());
    }
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(Bundle::executablePath(xml))), MachOHeader::Intel);
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(Bundle::executablePath(binary))), MachOHeader::PPC);

    const QString dpm = PluginLibraryBuilder::makeRTAS(folder, "Old.dpm", MachO::ppc());
    EXPECT_EQ(Bundle::infoValue(dpm, "CFBundlePackageType").toString(), "TDMw");
    const QString mas = PluginLibraryBuilder::makeMAS(folder, "Synth.bundle", MachO::ppc());
    EXPECT_FALSE(Bundle::infoValue(mas, "MotuPluginTypeUUID").toString().isEmpty());
    const QString au = PluginLibraryBuilder::makeAudioUnit(folder, "Echo", MachO::intel());
    EXPECT_TRUE(au.endsWith("/Echo.component"));
    const QVariantMap component = Bundle::infoValue(au, "AudioComponents").toList().value(0).toMap();
    EXPECT_EQ(component.value("name").toString(), "Acme: Echo");
}

TEST_F(BundleTest, ExecutablePathNeedsKeyAndFile)
{
    const QString folder = homePath("Plugins");
    const QString noKey = PluginLibraryBuilder::makeBundle(folder, "NoKey.vst", MachO::intel(), {}, PluginLibraryBuilder::Xml, {});
    EXPECT_TRUE(Bundle::executablePath(noKey).isEmpty());

    const QString noFile = PluginLibraryBuilder::makeVST(folder, "NoFile.vst", MachO::intel());
    ASSERT_TRUE(QFile::remove(noFile + "/Contents/MacOS/Plugin"));
    EXPECT_TRUE(Bundle::executablePath(noFile).isEmpty());

    // A name that climbs out of Contents/MacOS is not followed.
    const QString climbing = PluginLibraryBuilder::makeBundle(folder, "Climb.vst", MachO::intel(),
                                                              {{"CFBundleExecutable", "../Info.plist"}});
    EXPECT_TRUE(Bundle::executablePath(climbing).isEmpty());

    const QString garbage = PluginLibraryBuilder::makeVST(folder, "Garbage.vst", MachO::intel());
    writeBytes(garbage + "/Contents/Info.plist", "<plist><dict><key>CFBundleExecutable");
    EXPECT_FALSE(Bundle::infoDictionary(garbage));
    EXPECT_TRUE(Bundle::executablePath(garbage).isEmpty());
    EXPECT_TRUE(Bundle::canOpen(garbage));
}

TEST_F(BundleTest, FilePackageRules)
{
    const QString folder = homePath("Plugins");
    for (const char *name : {"A.component", "B.vst", "C.VST3", "D.rtas", "E.dpm", "F.bundle", "G.plugin", "H.app"})
        EXPECT_TRUE(Bundle::isFilePackage(PluginLibraryBuilder::makeFolder(folder + "/" + name))) << name;

    const QString withInfo = PluginLibraryBuilder::makeBundle(folder, "Plain", MachO::intel());
    EXPECT_TRUE(Bundle::isFilePackage(withInfo));

    const QString plainFolder = PluginLibraryBuilder::makeFolder(folder + "/Sub");
    EXPECT_FALSE(Bundle::isFilePackage(plainFolder));
    EXPECT_TRUE(Bundle::canOpen(plainFolder));
    EXPECT_FALSE(Bundle::infoDictionary(plainFolder));

    const QString file = PluginLibraryBuilder::makeFile(folder, "File.vst");
    EXPECT_FALSE(Bundle::isFilePackage(file));
    EXPECT_FALSE(Bundle::canOpen(file));
    EXPECT_FALSE(Bundle::isFilePackage(folder + "/Missing.vst"));
}

TEST_F(BundleTest, ArchitectureIsAnExactEightByteMatch)
{
    EXPECT_EQ(MachOHeader::classify(MachO::ppc()), MachOHeader::PPC);
    EXPECT_EQ(MachOHeader::classify(MachO::intel()), MachOHeader::Intel);
    EXPECT_EQ(MachOHeader::classify(MachO::universal2()), MachOHeader::Universal);
    EXPECT_EQ(MachOHeader::classify(MachO::x86_64()), MachOHeader::Unknown);
    EXPECT_EQ(MachOHeader::classify(MachO::universal3()), MachOHeader::Unknown);
    EXPECT_EQ(MachOHeader::classify(MachO::intel().left(7)), MachOHeader::Unknown);
    EXPECT_EQ(MachOHeader::classify(QByteArray()), MachOHeader::Unknown);

    const QString shortFile = PluginLibraryBuilder::makeFile(homePath("x"), "short", {}, MachO::intel().left(5));
    EXPECT_EQ(MachOHeader::firstBytes(shortFile).size(), 5);
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(shortFile)), MachOHeader::Unknown);
    EXPECT_TRUE(MachOHeader::firstBytes(homePath("x/missing")).isEmpty());
}

class FinderInfoTest : public TestRoots {
protected:
    // An AppleDouble header with the given entries (id, offset, length), then `tail`.
    static QByteArray appleDouble(const QList<std::array<quint32, 3>> &entries, const QByteArray &tail,
                                  quint16 count = 0xFFFF)
    {
        QByteArray bytes(26, '\0');
        qToBigEndian<quint32>(0x00051607, bytes.data());
        qToBigEndian<quint32>(0x00020000, bytes.data() + 4);
        qToBigEndian<quint16>(count == 0xFFFF ? quint16(entries.size()) : count, bytes.data() + 24);
        for (const auto &entry : entries) {
            QByteArray field(12, '\0');
            for (int i = 0; i < 3; ++i)
                qToBigEndian(entry[i], field.data() + 4 * i);
            bytes += field;
        }
        return bytes + tail;
    }
};

TEST_F(FinderInfoTest, TypeFromAttributeOrSidecar)
{
    const QString folder = homePath("VST");
    const QString typed = PluginLibraryBuilder::makeFile(folder, "Typed", "aPcs");
    EXPECT_EQ(FinderInfo::hfsTypeString(typed), "'aPcs'");
    EXPECT_EQ(FinderInfo::fileType(typed), 0x61506373u);

    // A sidecar whose Finder info follows a resource-fork entry.
    const QString sidecarTyped = PluginLibraryBuilder::makeFile(folder, "Old");
    QByteArray finderInfo(32, '\0');
    finderInfo.replace(0, 4, "TDMw");
    writeBytes(folder + "/._Old", appleDouble({{2, 50, 4}, {9, 54, 32}}, QByteArray("rsrc") + finderInfo));
    EXPECT_EQ(FinderInfo::hfsTypeString(sidecarTyped), "'TDMw'");

    EXPECT_TRUE(FinderInfo::hfsTypeString(PluginLibraryBuilder::makeFile(folder, "Untyped")).isEmpty());
    EXPECT_TRUE(FinderInfo::hfsTypeString(folder + "/Missing").isEmpty());
    EXPECT_EQ(FinderInfo::typeCodeString(0x4D617321), "'Mas!'");
}

TEST_F(FinderInfoTest, MalformedSidecarsHaveNoType)
{
    const QString folder = homePath("VST");
    const QString file = PluginLibraryBuilder::makeFile(folder, "Plug");
    const QString sidecar = folder + "/._Plug";
    const QByteArray info = QByteArray("aPcs") + QByteArray(28, '\0');
    const QByteArray good = appleDouble({{9, 38, 32}}, info);

    QByteArray badMagic = good;
    badMagic[3] = 0x00;
    const QList<QByteArray> cases = {
        QByteArray(),
        good.left(20),                                      // header cut short
        good.left(30),                                      // entry cut short
        good.left(40),                                      // Finder info cut short
        badMagic,
        appleDouble({{9, 38, 32}}, info, 0xFFFE),           // far more entries than bytes
        appleDouble({{9, 0xFFFFFFF0, 32}}, info),           // offset beyond the file
        appleDouble({{9, 38, 0xFFFFFFFF}}, info),           // length beyond the file
        appleDouble({{9, 38, 2}}, info),                    // too short to hold a type
        appleDouble({{2, 38, 32}}, info),                   // no Finder info entry
    };
    for (qsizetype i = 0; i < cases.size(); ++i) {
        writeBytes(sidecar, cases[i]);
        EXPECT_TRUE(FinderInfo::hfsTypeString(file).isEmpty()) << "case " << i;
    }
    writeBytes(sidecar, good);
    EXPECT_EQ(FinderInfo::hfsTypeString(file), "'aPcs'");
}

} // namespace
} // namespace korvane
