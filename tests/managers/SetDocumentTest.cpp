#include "managers/SetDocument.h"

#include "platform/TypedStream.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFile>

namespace korvane {

// One line per item: what a set document keeps of it.
static QStringList summary(const QList<AUItemPtr> &items)
{
    QStringList lines;
    for (const AUItemPtr &item : items)
        lines << item->getAUName() + "|" + item->getAULocation() + "|"
                     + (item->getAUGlobal() ? "1" : "0") + (item->getAUActive() ? "1" : "0");
    return lines;
}

class SetDocumentTest : public TestRoots {
protected:
    QList<AUItemPtr> sample() const
    {
        const QStringList items{"Über Delay.component|/Library/Audio/Plug-Ins/Components|11",
                                "日本語 Reverb.vst|"
                                    + homePath("Library/Audio/Plug-Ins/VST (Disabled)") + "|00",
                                QString(230, 'n') + ".component|/" + QString(250, 'p') + "|10",
                                "Sub/Folder Plug.dpm|/Library/Audio/Plug-Ins/MAS|01"};
        QList<AUItemPtr> result;
        for (const QString &line : items) {
            result << std::make_shared<AUItem>();
            result.last()->setAUName(line.section('|', 0, 0));
            result.last()->setAULocation(line.section('|', 1, 1));
            result.last()->setAUGlobal(line.section('|', 2).startsWith('1'));
            result.last()->setAUActive(line.section('|', 2).endsWith('1'));
        }
        return result;
    }
    // Writes a document and tells whether it is readable and what it reads as.
    QStringList reread(const QByteArray &bytes, bool readable = false) const
    {
        const QString path = homePath("doc.aukorv");
        writeText(path, bytes);
        EXPECT_EQ(SetDocument::load(path).has_value(), readable);
        return summary(SetDocument::read(path));
    }
};

TEST_F(SetDocumentTest, WorkedExampleOpensAndIsWrittenIdentically)
{
    QFile file(KORVANE_TEST_DATA "/typedstream/AUItemExample");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray example = file.readAll();
    const QList<AUItemPtr> items = SetDocument::decode(example);
    EXPECT_EQ(summary(items), QStringList{"Foo.component|/Library/Audio/Plug-Ins/Components|11"});
    EXPECT_EQ(SetDocument::encode(items), example);
}

TEST_F(SetDocumentTest, SavedDocumentsOpenWithEveryItemAndFailedWritesKeepTheOld)
{
    EXPECT_FALSE(SetDocument::write(disk(), homePath("missing/folder/set.aukorv"), sample()));
    EXPECT_FALSE(QFile::exists(homePath("missing/folder/set.aukorv")));

    const QString path = homePath("locked/set.aukorv");
    QDir().mkpath(homePath("locked"));
    ASSERT_TRUE(SetDocument::write(disk(), path, {}));
    ASSERT_TRUE(SetDocument::write(disk(), path, sample())); // replaces the document whole
    EXPECT_TRUE(SetDocument::load(path).has_value());
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sample()));
    ImmutableGuard guard(homePath("locked"));
    if (!guard.ok())
        GTEST_SKIP() << "no immutable attribute on this file system";
    EXPECT_FALSE(SetDocument::write(disk(), path, {}));
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sample()));
}

TEST_F(SetDocumentTest, OnlyArraysOfItemsAreReadable)
{
    EXPECT_FALSE(SetDocument::load(homePath("nothing.aukorv")).has_value());
    EXPECT_TRUE(reread("not an archive at all").isEmpty());

    using W = TypedStreamWriter;
    const auto name = W::makeString("A.component"), where = W::makeString("/Library");
    const auto yes = W::makeString("YES");
    const auto item = [&](const char *className, QList<ArchivedObjectPtr> objects) {
        return W::makeArray({W::makeObject(className, std::move(objects))});
    };
    const struct {
        const char *what;
        ArchivedObjectPtr root;
    } cases[] = {
        {"root is a string", name},
        {"root is nil", nullptr},
        {"element is a string",
         W::makeArray({W::makeObject("AUItem", {name, where, yes, yes}), name})},
        {"element is nil", W::makeArray({nullptr})},
        {"wrong class name", item("AUltem", {name, where, yes, yes})},
        {"three objects", item("AUItem", {name, where, yes})},
        {"name not a string", item("AUItem", {W::makeArray({}), where, yes, yes})},
    };
    for (const auto &c : cases)
        EXPECT_TRUE(reread(W::write(c.root)).isEmpty()) << c.what;

    // Either array class, nil or non-"YES" flags as NO, an empty array as an empty set.
    const auto lower = W::makeObject("AUItem", {name, where, nullptr, W::makeString("yes")});
    EXPECT_EQ(reread(W::write(W::makeArray({lower}, false)), true),
              QStringList{"A.component|/Library|00"});
    EXPECT_TRUE(reread(W::write(W::makeArray({})), true).isEmpty());
}

TEST_F(SetDocumentTest, DamagedDocumentsNeverCrash)
{
    const QByteArray valid = SetDocument::encode(sample());
    for (qsizetype length = 0; length < valid.size(); ++length)
        EXPECT_TRUE(SetDocument::decode(valid.left(length)).isEmpty()) << length;

    // A changed byte may leave a readable document (a letter of a name), never a different count.
    for (qsizetype at = 0; at < valid.size(); ++at) {
        for (const char value :
             {'\x00', '\x01', '\x7f', '\x80', '\x81', '\x84', '\x85', '\x86', '\x92', '\xff'}) {
            QByteArray damaged = valid;
            damaged[at] = value;
            const qsizetype count = SetDocument::decode(damaged).size();
            EXPECT_TRUE(count == 0 || count == 4) << at << " " << int(value);
        }
    }
}

} // namespace korvane
