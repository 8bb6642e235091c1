#include "HelperFixture.h"

#include "helper/PrivilegedMover.h"
#include "os/LibraryLock.h"

#include <QRegularExpression>

#include <cerrno>

namespace korvane {
namespace {

using State = PrivilegedMover::State;

class PrivilegedMoverTest : public HelperFixture {
protected:
    PrivilegedMover::Outcome run(const QList<helper::Move> &moves,
                                 const QString &pkexec = FAKE_PKEXEC,
                                 const QString &helper = KORVANE_HELPER) const
    {
        PrivilegedMover mover(roots(), pkexec, helper);
        mover.setLockWaitMs(300);
        return mover.run(moves);
    }
    static int answered(const PrivilegedMover::Outcome &outcome)
    {
        return int(std::count_if(outcome.results.cbegin(), outcome.results.cend(),
                                 [](const auto &result) { return result.answered || result.ok; }));
    }
};

// One pkexec run for every move; each result in the order asked, a taken target told by its code.
TEST_F(PrivilegedMoverTest, RunsTheHelperOnceAndMapsEachMove)
{
    makeBundle(vst("Echo.vst"));
    makeBundle(vst("Twice.vst"));
    makeBundle(vstOff("Twice.vst"), 7);
    const QList<helper::Move> moves{{vst("Echo.vst"), vstOff("Echo.vst")},
                                    {vst("Twice.vst"), vstOff("Twice.vst")}};

    const PrivilegedMover::Outcome outcome = run(moves);

    EXPECT_EQ(outcome.state, State::Failed);
    ASSERT_EQ(outcome.results.size(), 2);
    EXPECT_EQ(outcome.results.at(0).move, moves.at(0));
    EXPECT_TRUE(outcome.results.at(0).ok && outcome.results.at(0).answered);
    EXPECT_TRUE(outcome.results.at(1).answered && !outcome.results.at(1).ok);
    EXPECT_EQ(outcome.results.at(1).code, EEXIST);
    EXPECT_TRUE(PrivilegedMover::describe(outcome).contains("1 of 2"));
    EXPECT_TRUE(isWholeBundle(vstOff("Echo.vst")));
    EXPECT_EQ(run({{vstOff("Echo.vst"), vst("Echo.vst")}}).state, State::Done);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// Each way the helper does not run, or answers nothing it writes, is its own state and claims no
// move: no pkexec (administrator rights are needed), no helper, the person cancelled (126), no
// agent (127), a stranger's line, a flood, a death. The request is larger than a pipe holds, so
// a pkexec that has gone is not written to in vain. With nothing to move, nothing is asked.
TEST_F(PrivilegedMoverTest, TellsApartEachWayTheHelperDidNotMove)
{
    QList<helper::Move> moves;
    for (int i = 0; i < 3000; ++i)
        moves.append(
            {vst(QString("Plug-in %1.vst").arg(i)), vstOff(QString("Plug-in %1.vst").arg(i))});
    struct Case {
        const char *mode;
        QString pkexec, helper;
        State state;
    };
    const QList<Case> cases{{"run", "", KORVANE_HELPER, State::NoPolkit},
                            {"run", rootPath("no/pkexec"), KORVANE_HELPER, State::NoPolkit},
                            {"run", FAKE_PKEXEC, rootPath("korvane-helper"), State::NoHelper},
                            {"deny", FAKE_PKEXEC, KORVANE_HELPER, State::Cancelled},
                            {"noagent", FAKE_PKEXEC, KORVANE_HELPER, State::NoAgent},
                            {"garbage", FAKE_PKEXEC, KORVANE_HELPER, State::Broken},
                            {"flood", FAKE_PKEXEC, KORVANE_HELPER, State::Broken},
                            {"crash", FAKE_PKEXEC, KORVANE_HELPER, State::Broken}};
    for (const Case &way : cases) {
        SCOPED_TRACE(way.mode + (" " + way.pkexec + " " + way.helper).toStdString());
        qputenv("FAKE_PKEXEC_MODE", way.mode);
        const PrivilegedMover::Outcome outcome = run(moves, way.pkexec, way.helper);
        qunsetenv("FAKE_PKEXEC_MODE");
        EXPECT_EQ(outcome.state, way.state);
        EXPECT_EQ(outcome.results.size(), moves.size());
        EXPECT_EQ(answered(outcome), 0);
        EXPECT_FALSE(PrivilegedMover::describe(outcome).isEmpty());
        if (way.state == State::NoPolkit) {
            EXPECT_TRUE(PrivilegedMover::describe(outcome).startsWith(
                "Administrator rights are needed to change plug-ins in the system folders"));
        }
        if (way.state == State::NoAgent) {
            EXPECT_TRUE(outcome.detail.contains("No authentication agent found"));
        }
    }
    EXPECT_EQ(run({}, QString()).state, State::Done);
}

// The helper's refusal and a lock it could not take come back with their reasons; nothing moved.
TEST_F(PrivilegedMoverTest, ARefusalOrABusyLibraryComesBackWithItsReason)
{
    makeBundle(vst("Echo.vst"));
    const PrivilegedMover::Outcome refused =
        run({{vst("Echo.vst"), homePath("Library/Audio/Plug-Ins/VST/Echo.vst")}});
    EXPECT_EQ(refused.state, State::Refused);
    EXPECT_EQ(refused.path, homePath("Library/Audio/Plug-Ins/VST/Echo.vst"));
    EXPECT_TRUE(PrivilegedMover::describe(refused).contains(refused.path));

    const LibraryLock held(locks(), disk(), {folder(TypeVST, LocSystemActive)}, 0);
    const PrivilegedMover::Outcome busy = run({{vst("Echo.vst"), vstOff("Echo.vst")}});
    EXPECT_EQ(busy.state, State::LockBusy);
    EXPECT_TRUE(busy.holder.contains(QString::number(::getpid()))) << qPrintable(busy.holder);
    EXPECT_EQ(answered(busy), 0);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// The client starts the installed helper, and the shipped polkit action names that very path:
// otherwise pkexec would ask for its generic right, with its generic message.
TEST_F(PrivilegedMoverTest, TheInstalledHelperIsThePathThePolicyNames)
{
    const QRegularExpression annotation(
        R"(<annotate key="org.freedesktop.policykit.exec.path">([^<]*)</annotate>)");
    const QRegularExpressionMatch match = annotation.match(readText(KORVANE_HELPER_POLICY));
    ASSERT_TRUE(match.hasMatch());
    EXPECT_EQ(match.captured(1), KORVANE_HELPER_INSTALLED);
    EXPECT_EQ(PrivilegedMover::defaultHelper(), KORVANE_HELPER_INSTALLED);
}

} // namespace
} // namespace korvane
