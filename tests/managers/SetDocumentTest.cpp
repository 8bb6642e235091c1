#include "managers/SetDocument.h"

#include "platform/TypedStream.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFile>

using namespace korvane;

namespace {

AUItemPtr makeItem(const QString &name, const QString &location, bool global, bool active)
{
    auto item = std::make_shared<AUItem>();
    item->setAUName(name);
    item->setAULocation(location);
    item->setAUGlobal(global);
    item->setAUActive(active);
    return item;
}

QByteArray workedExample()
{
    QFile file(QStringLiteral(KORVANE_TEST_DATA "/typedstream/AUItemExample"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

// One line per item: what a set document keeps of it.
QStringList summary(const QList<AUItemPtr> &items)
{
    QStringList lines;
    for (const AUItemPtr &item : items)
        lines << QString("%1|%2|%3|%4")
                     .arg(item->getAUName(), item->getAULocation())
                     .arg(int(item->getAUGlobal()))
                     .arg(int(item->getAUActive()));
    return lines;
}

} // namespace

class SetDocumentTest : public TestRoots {
protected:
    QList<AUItemPtr> sampleItems() const
    {
        return {makeItem("Über Delay.component", "/Library/Audio/Plug-Ins/Components", true, true),
                makeItem("日本語 Reverb.vst", homePath("Library/Audio/Plug-Ins/VST (Disabled)"),
                         false, false),
                makeItem(QString(230, 'n') + ".component", "/" + QString(250, 'p'), true, false),
                makeItem("Sub/Folder Plug.dpm", "/Library/Audio/Plug-Ins/MAS", false, true)};
    }
};

TEST_F(SetDocumentTest, WorkedExampleOpensAndIsWrittenIdentically)
{
    const QList<AUItemPtr> items = SetDocument::decode(workedExample());
    EXPECT_EQ(summary(items), QStringList{"Foo.component|/Library/Audio/Plug-Ins/Components|1|1"});
    EXPECT_EQ(SetDocument::encode(items), workedExample());
}

TEST_F(SetDocumentTest, SavedDocumentsOpenWithEveryItem)
{
    const QString path = homePath("Documents/mine.aukorv");
    QDir().mkpath(homePath("Documents"));
    ASSERT_TRUE(SetDocument::write(path, sampleItems()));
    EXPECT_TRUE(SetDocument::isReadable(path));
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sampleItems()));

    // Rewriting replaces the document whole.
    ASSERT_TRUE(SetDocument::write(path, {}));
    EXPECT_TRUE(SetDocument::isReadable(path));
    EXPECT_TRUE(SetDocument::read(path).isEmpty());

    // "NO" first appears at item 100, so its later uses are references past index 237.
    QList<AUItemPtr> many;
    for (int i = 0; i < 200; ++i)
        many.append(makeItem(QString("Plug %1.component").arg(i), "/Library/Audio/Plug-Ins/Components",
                             i < 100 || i % 3 == 0, i < 100 || i % 2 == 0));
    EXPECT_TRUE(SetDocument::encode(many).contains("\x92\x81")); // "@", then a 16-bit reference
    ASSERT_TRUE(SetDocument::write(path, many));
    EXPECT_EQ(summary(SetDocument::read(path)), summary(many));
}

TEST_F(SetDocumentTest, FailedWritesReportFalseAndKeepTheOldDocument)
{
    EXPECT_FALSE(SetDocument::write(homePath("missing/folder/set.aukorv"), sampleItems()));
    EXPECT_FALSE(QFile::exists(homePath("missing/folder/set.aukorv")));

    const QString folder = homePath("locked");
    QDir().mkpath(folder);
    const QString path = folder + "/set.aukorv";
    ASSERT_TRUE(SetDocument::write(path, sampleItems()));
    ImmutableGuard guard(folder);
    if (!guard.ok())
        GTEST_SKIP() << "no immutable attribute on this file system";
    EXPECT_FALSE(SetDocument::write(path, {}));
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sampleItems()));
}

TEST_F(SetDocumentTest, OnlyArraysOfItemsAreReadable)
{
    EXPECT_FALSE(SetDocument::isReadable(homePath("nothing.aukorv")));
    EXPECT_TRUE(SetDocument::read(homePath("nothing.aukorv")).isEmpty());
    writeText(homePath("garbage.aukorv"), "not an archive at all");
    EXPECT_FALSE(SetDocument::isReadable(homePath("garbage.aukorv")));

    using W = TypedStreamWriter;
    auto item = [](const QString &className, QList<ArchivedObjectPtr> objects) {
        return W::makeObject(className, std::move(objects));
    };
    const auto name = W::makeString("A.component");
    const auto where = W::makeString("/Library");
    const auto yes = W::makeString("YES");
    struct Case {
        const char *what;
        ArchivedObjectPtr root;
    };
    const QList<Case> cases = {
        {"root is a string", W::makeString("A.component")},
        {"root is nil", nullptr},
        {"element is a string", W::makeArray({item("AUItem", {name, where, yes, yes}), name})},
        {"element is nil", W::makeArray({nullptr})},
        {"wrong class name", W::makeArray({item("AUltem", {name, where, yes, yes})})},
        {"three objects", W::makeArray({item("AUItem", {name, where, yes})})},
        {"name is not a string", W::makeArray({item("AUItem", {W::makeArray({}), where, yes, yes})})},
    };
    for (const Case &c : cases) {
        writeText(homePath("hostile.aukorv"), W::write(c.root));
        EXPECT_FALSE(SetDocument::isReadable(homePath("hostile.aukorv"))) << c.what;
        EXPECT_TRUE(SetDocument::read(homePath("hostile.aukorv")).isEmpty()) << c.what;
    }

    // Either array class, nil or non-"YES" flags as NO, an empty array as an empty set.
    writeText(homePath("ok.aukorv"),
              W::write(W::makeArray({item("AUItem", {name, where, nullptr, W::makeString("yes")})},
                                    false)));
    EXPECT_EQ(summary(SetDocument::read(homePath("ok.aukorv"))),
              QStringList{"A.component|/Library|0|0"});
    writeText(homePath("empty.aukorv"), W::write(W::makeArray({})));
    EXPECT_TRUE(SetDocument::isReadable(homePath("empty.aukorv")));
}

TEST_F(SetDocumentTest, DamagedDocumentsNeverCrash)
{
    const QByteArray valid = SetDocument::encode(sampleItems());
    for (qsizetype length = 0; length < valid.size(); ++length)
        EXPECT_TRUE(SetDocument::decode(valid.left(length)).isEmpty()) << length;

    // A changed byte may leave a readable document (a letter of a name), never a different count.
    for (qsizetype at = 0; at < valid.size(); ++at) {
        for (const char value : {'\x00', '\x01', '\x7f', '\x80', '\x81', '\x84', '\x85', '\x86',
                                 '\x92', '\xff'}) {
            QByteArray damaged = valid;
            damaged[at] = value;
            const qsizetype count = SetDocument::decode(damaged).size();
            EXPECT_TRUE(count == 0 || count == 4) << at << " " << int(value);
        }
    }
}
