#pragma once

#include "core/FormatTable.h"
#include "helper/HelperProtocol.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <unistd.h>

namespace korvane {

// System plug-in folders under a temporary root, and korvane-helper run on them directly, as
// root, as pkexec would run it.
class HelperFixture : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        if (::geteuid() != 0)
            GTEST_SKIP() << "the helper moves only through folders root alone may change; "
                            "run the tests as root";
    }

    // Inside a built-in format's system folders.
    QString in(int type, int loc, const QString &path) const
    {
        return folder(type, loc) + '/' + path;
    }
    QString vst(const QString &path) const { return in(TypeVST, LocSystemActive, path); }
    QString vstOff(const QString &path) const { return in(TypeVST, LocSystemDisabled, path); }
    QString au(const QString &path) const { return in(TypeAU, LocSystemActive, path); }
    QString auOff(const QString &path) const { return in(TypeAU, LocSystemDisabled, path); }

    // A bundle with a binary of size bytes; its path.
    static QString makeBundle(const QString &path, qsizetype size = 100)
    {
        EXPECT_TRUE(QDir().mkpath(path + "/Contents/MacOS"));
        writeText(path + "/Contents/Info.plist", "<plist/>");
        writeText(path + "/Contents/MacOS/binary", QByteArray(size, 'b'));
        return path;
    }
    static bool isWholeBundle(const QString &path, qsizetype size = 100)
    {
        return readText(path + "/Contents/Info.plist") == "<plist/>"
               && QFileInfo(path + "/Contents/MacOS/binary").size() == size;
    }
    static bool isThere(const QString &path) { return QFileInfo(path).isDir(); }

    QStringList helperArguments(int waitMs = 2000) const
    {
        return {"--root", root(), "--home", home(), "--wait-ms", QString::number(waitMs)};
    }

    struct Run {
        int exit = -1;
        QList<QByteArray> lines;
        qint64 ms = 0;
        helper::AnswerLine line(qsizetype i) const
        {
            return helper::decodeAnswerLine(lines.value(i < 0 ? lines.size() + i : i));
        }
        helper::Ending ending() const { return line(-1).ending.value_or(helper::Ending{}); }
    };

    static Run runHelper(const QByteArray &request, const QStringList &arguments)
    {
        Run run;
        QElapsedTimer clock;
        clock.start();
        QProcess process;
        process.start(KORVANE_HELPER, arguments);
        EXPECT_TRUE(process.waitForStarted());
        process.write(request);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60000));
        run.ms = clock.elapsed();
        run.exit = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.lines = process.readAllStandardOutput().split('\n');
        if (!run.lines.isEmpty() && run.lines.last().isEmpty())
            run.lines.removeLast();
        return run;
    }
    Run runHelper(const QList<helper::Move> &moves) const
    {
        return runHelper(helper::encodeRequest(moves), helperArguments());
    }
};

} // namespace korvane
