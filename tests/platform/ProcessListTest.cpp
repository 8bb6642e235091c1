#include "platform/ProcessList.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvane {
namespace {

// A child started through a link whose name holds a line break and what looks like the line of
// PID 1: the list must still show it as one line of its own PID.
TEST(ProcessListTest, EachProcessIsOneLineThatNoArgumentCanForge)
{
    QTemporaryDir folder;
    const QByteArray marker =
        "korvane-marker-" + QByteArray::number(QCoreApplication::applicationPid());
    const QString program = folder.path() + "/sleeper\n    1 " + marker;
    ASSERT_TRUE(QFile::link(QStandardPaths::findExecutable("sleep"), program));
    QProcess child;
    child.start(program, {"30"});
    ASSERT_TRUE(child.waitForStarted());
    const qint64 pid = child.processId();
    bool ok = false;
    const QByteArray list = readProcessList(&ok);
    child.kill();
    child.waitForFinished();
    EXPECT_TRUE(ok);
    const QByteArray line = QByteArray::number(pid).rightJustified(5, ' ') + ' '
                            + QFile::encodeName(folder.path()) + "/sleeper?    1 " + marker
                            + " 30\n";
    EXPECT_TRUE(list.contains(line)) << line.toStdString();
    EXPECT_FALSE(list.contains("\n    1 " + marker));
    EXPECT_TRUE(list.startsWith("    1 ")) << "the list runs by ascending PID";
}

} // namespace
} // namespace korvane
