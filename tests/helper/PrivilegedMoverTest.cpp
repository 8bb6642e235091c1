#include "HelperFixture.h"

#include "helper/PrivilegedMover.h"
#include "platform/LibraryLock.h"

#include <QRegularExpression>

#include <cerrno>

namespace korvane {
namespace {

using State = PrivilegedMover::State;

// What the stand-in pkexec does while it lives.
class PkexecMode {
public:
    explicit PkexecMode(const char *mode) { qputenv("FAKE_PKEXEC_MODE", mode); }
    ~PkexecMode() { qunsetenv("FAKE_PKEXEC_MODE"); }
};

class PrivilegedMoverTest : public HelperFixture {
protected:
    PrivilegedMover mover(const QString &pkexec = FAKE_PKEXEC) const
    {
        PrivilegedMover mover(roots(), pkexec, KORVANE_HELPER);
        mover.setLockWaitMs(300);
        return mover;
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

    const PrivilegedMover::Outcome outcome = mover().run(moves);

    EXPECT_EQ(outcome.state, State::Failed);
    ASSERT_EQ(outcome.results.size(), 2);
    EXPECT_EQ(outcome.results.at(0).move, moves.at(0));
    EXPECT_TRUE(outcome.results.at(0).ok && outcome.results.at(0).answered);
    EXPECT_TRUE(outcome.results.at(1).answered);
    EXPECT_FALSE(outcome.results.at(1).ok);
    EXPECT_EQ(outcome.results.at(1).code, EEXIST);
    EXPECT_TRUE(outcome.results.at(1).error.contains(vstOff("Twice.vst")));
    EXPECT_TRUE(PrivilegedMover::describe(outcome).contains("1 of 2"));
    EXPECT_TRUE(isWholeBundle(vstOff("Echo.vst")));

    EXPECT_EQ(mover().run({{vstOff("Echo.vst"), vst("Echo.vst")}}).state, State::Done);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// Without pkexec, or without the helper, nothing is started and the person is told that
// administrator rights are needed; with nothing to move nothing is asked at all.
TEST_F(PrivilegedMoverTest, WithoutPolkitSaysAdministratorRightsAreNeeded)
{
    makeBundle(vst("Echo.vst"));
    const QList<helper::Move> moves{{vst("Echo.vst"), vstOff("Echo.vst")}};
    for (const QString &pkexec : {QString(), rootPath("no/pkexec")}) {
        const PrivilegedMover::Outcome outcome = mover(pkexec).run(moves);
        EXPECT_EQ(outcome.state, State::NoPolkit);
        ASSERT_EQ(outcome.results.size(), 1);
        EXPECT_FALSE(outcome.results.at(0).ok);
        EXPECT_TRUE(PrivilegedMover::describe(outcome).startsWith(
            "Administrator rights are needed to change plug-ins in the system folders"));
    }
    EXPECT_EQ(mover(QString()).run({}).state, State::Done);
    PrivilegedMover noHelper(roots(), FAKE_PKEXEC, rootPath("korvane-helper"));
    EXPECT_EQ(noHelper.run(moves).state, State::NoHelper);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// pkexec's own answers: the person cancelled (126) or nobody could ask (127). A request larger
// than a pipe holds is not written in vain into a pkexec that has gone.
TEST_F(PrivilegedMoverTest, TellsACancelledOrUnaskedRightFromFailedMoves)
{
    QList<helper::Move> moves;
    for (int i = 0; i < 3000; ++i)
        moves.append(
            {vst(QString("Plug-in %1.vst").arg(i)), vstOff(QString("Plug-in %1.vst").arg(i))});
    {
        const PkexecMode deny("deny");
        const PrivilegedMover::Outcome outcome = mover().run(moves);
        EXPECT_EQ(outcome.state, State::Cancelled);
        EXPECT_EQ(answered(outcome), 0);
        EXPECT_FALSE(PrivilegedMover::describe(outcome).isEmpty());
    }
    const PkexecMode noAgent("noagent");
    const PrivilegedMover::Outcome outcome = mover().run(moves);
    EXPECT_EQ(outcome.state, State::NoAgent);
    EXPECT_TRUE(outcome.detail.contains("No authentication agent found"));
    EXPECT_EQ(answered(outcome), 0);
}

// The helper's refusal and a lock it could not take come back with their reasons; nothing moved.
TEST_F(PrivilegedMoverTest, ARefusalOrABusyLibraryComesBackWithItsReason)
{
    makeBundle(vst("Echo.vst"));
    const PrivilegedMover::Outcome refused =
        mover().run({{vst("Echo.vst"), homePath("Library/Audio/Plug-Ins/VST/Echo.vst")}});
    EXPECT_EQ(refused.state, State::Refused);
    EXPECT_EQ(refused.path, homePath("Library/Audio/Plug-Ins/VST/Echo.vst"));
    EXPECT_TRUE(PrivilegedMover::describe(refused).contains(refused.path));

    const LibraryLock held(disk(), {folder(TypeVST, LocSystemActive)}, 0);
    const PrivilegedMover::Outcome busy = mover().run({{vst("Echo.vst"), vstOff("Echo.vst")}});
    EXPECT_EQ(busy.state, State::LockBusy);
    EXPECT_TRUE(busy.holder.contains(QString::number(::getpid()))) << qPrintable(busy.holder);
    EXPECT_EQ(answered(busy), 0);
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// An answer that is not the helper's (a stranger's line, far too much, a death) claims no move.
TEST_F(PrivilegedMoverTest, AnAnswerItCannotReadClaimsNoMove)
{
    const QList<helper::Move> moves{{vst("Echo.vst"), vstOff("Echo.vst")}};
    for (const char *mode : {"garbage", "flood", "crash"}) {
        SCOPED_TRACE(mode);
        const PkexecMode pkexec(mode);
        const PrivilegedMover::Outcome outcome = mover().run(moves);
        EXPECT_EQ(outcome.state, State::Broken);
        EXPECT_EQ(answered(outcome), 0);
        EXPECT_FALSE(outcome.detail.isEmpty());
    }
}

// The client starts the installed helper, and the shipped polkit action names that very path:
// otherwise pkexec would ask for its generic right, with its generic message.
TEST_F(PrivilegedMoverTest, TheInstalledHelperIsThePathThePolicyNames)
{
    const QString policy = readText(KORVANE_HELPER_POLICY);
    const QRegularExpression annotation(
        R"(<annotate key="org.freedesktop.policykit.exec.path">([^<]*)</annotate>)");
    const QRegularExpressionMatch match = annotation.match(policy);
    ASSERT_TRUE(match.hasMatch()) << qPrintable(policy);
    EXPECT_EQ(match.captured(1), KORVANE_HELPER_INSTALLED);
    EXPECT_EQ(PrivilegedMover::defaultHelper(), KORVANE_HELPER_INSTALLED);
}

} // namespace
} // namespace korvane
