#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <thread>

#include "tests/kontodb/ChildProcess.h"
#include "tests/kontodb/Command.h"
#include "tools/kontodb/PasswordPrompt.h"
#include "tools/kontodb/Signals.h"

/// What the system does to a program: no room, Ctrl-C, the end.
namespace kontodb {
namespace {

constexpr int kDiskFull = 3;

class HardTimes : public Command {
protected:
    static void make(const Text& accounts) {
        ASSERT_EQ(call({u"create", u"k.mdb", u"--password=", u"--accounts", accounts}).exitCode, kExitSuccess);
    }

    /// @return the exit code of a process whose files may not be longer; kDiskFull for that error
    static int callWithin(rlim_t limitBytes, const std::vector<Text>& arguments) {
        const int status = statusOf(start([&] {
            const rlimit limit{limitBytes, limitBytes};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return kExitError;
            const Outcome outcome = call(arguments);
            return outcome.errors.find("Nicht genügend Speicherplatz") != std::string::npos ? kDiskFull
                                                                                            : outcome.exitCode;
        }));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    template <typename Condition>
    static void waitUntil(Condition isTrue) {
        while (!isTrue())
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
};

TEST_F(HardTimes, WritesAllOrNothingWhereTheRoomEndsAnywhere) {
    make(u"40");
    const std::string before = contentOf("k.mdb");
    const struct {
        std::vector<Text> arguments;
        const char* target;
        rlim_t step;
    } cases[] = {
        // One appends pages first, one only writes over old ones, one makes a file.
        {{u"exec", u"k.mdb", u"--all", u"UPDATE Benutzerkonto SET BenKTO_ServerPath = '" + Text(200, u'ä') + u"'"},
         "k.mdb",
         5003},
        {{u"exec", u"k.mdb", u"DELETE FROM Benutzerkonto WHERE BenKTO_ID > 7"}, "k.mdb", 5003},
        {{u"create", u"neu.mdb", u"--accounts", u"40", u"--password="}, "neu.mdb", 9001},
    };
    for (const auto& [arguments, target, step] : cases) {
        const auto names = this->names();
        write("k.mdb", before);
        const std::string old = contentOf(target);
        int code = kDiskFull;
        for (rlim_t limit = 0; code == kDiskFull; limit += step) {
            SCOPED_TRACE(limit);
            code = callWithin(limit, arguments);
            EXPECT_EQ(contentOf(target) == old, code == kDiskFull);
            EXPECT_EQ(this->names() == names, code == kDiskFull || !old.empty());
        }
        EXPECT_EQ(code, kExitSuccess);
        EXPECT_EQ(call({u"check", base::fromUtf8(target)}).exitCode, kExitSuccess);
    }
    EXPECT_EQ(contentOf("neu.mdb"), before);
}

TEST_F(HardTimes, SaysWhatIsWriteProtected) {
    namespace fs = std::filesystem;
    make(u"0");
    const Text change = u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('x')";
    const struct {
        int fileRights;
        std::vector<Text> arguments;
        std::string error;
    } cases[] = {
        {0444, {u"exec", u"k.mdb", change}, "\nDie Datei 'k.mdb' ist schreibgeschützt"},
        {0666, {u"exec", u"k.mdb", change}, "\nDer Ordner der Datei ist schreibgeschützt"},
        {0666, {u"backup", u"k.mdb", u"neu.mdb"}, "\nDer Ordner von 'neu.mdb' ist schreibgeschützt"},
        {0666, {u"create", u"neu.mdb"}, "\nDer Ordner von 'neu.mdb' ist schreibgeschützt"},
        {0666, {u"check", u"."}, "\n'.' ist ein Ordner."},
    };
    for (const auto& [fileRights, arguments, error] : cases) {
        fs::permissions("k.mdb", static_cast<fs::perms>(fileRights));
        fs::permissions(".", static_cast<fs::perms>(0555));
        const int status = statusOf(start([&, &arguments = arguments, &error = error] {
            if (::geteuid() == 0 && ::setuid(65534) != 0) return 1;  // an administrator may write everywhere
            const Outcome outcome = call(arguments);
            if (outcome.errors.find(error) != std::string::npos) return 0;
            std::cerr << outcome.errors << "wanted: " << error << std::endl;
            return 1;
        }));
        EXPECT_EQ(status, 0);
    }
    fs::permissions(".", fs::perms::owner_all);
}

TEST_F(HardTimes, LeavesNoFileThatIsNotWholeWhenItIsEnded) {
    const auto endsLeaving = [&](const std::vector<Text>& arguments, int signal, const std::vector<std::string>& left) {
        const std::size_t before = names().size();
        const pid_t process = start([&] { return call(arguments).exitCode; });
        waitUntil([&] { return names().size() > before; });
        ::kill(process, signal);
        const int status = statusOf(process);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
        EXPECT_EQ(names(), left);
    };
    const std::vector<Text> creating = {u"create", u"k.mdb", u"--accounts", u"1000000"};
    endsLeaving(creating, SIGINT, {});
    endsLeaving(creating, SIGTERM, {});
    endsLeaving(creating, SIGKILL, {"k.mdb-neu-1"});
    make(u"20000");
    endsLeaving({u"compact", u"k.mdb", u"neu.mdb"}, SIGINT, {"k.mdb", "k.mdb-neu-1"});
}

TEST_F(HardTimes, ExecutesAllStatementsOrNoneWhenItIsEnded) {
    make(u"2000");
    const std::string before = contentOf("k.mdb");
    write("a.sql",
          "UPDATE Benutzerkonto SET BenKTO_Name = 'x';\n"
          "DELETE FROM Benutzerkonto WHERE BenKTO_ID > 700");
    int ended = 0;
    for (int delay = 0, status = -1; status != 0; delay += 2) {
        write("k.mdb", before);
        const pid_t process = start([] { return call({u"exec", u"k.mdb", u"--all", u"--file", u"a.sql"}).exitCode; });
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        ::kill(process, SIGINT);
        status = statusOf(process);
        ASSERT_TRUE(status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGINT)) << status;
        EXPECT_EQ(names(), (std::vector<std::string>{"a.sql", "k.mdb"}));
        if (contentOf("k.mdb") == before)
            ++ended;
        else
            expect("\n$ query k.mdb \"SELECT COUNT(*) FROM Benutzerkonto WHERE BenKTO_Name = 'x'\"\nAnzahl\n700\n");
    }
    EXPECT_FALSE(contentOf("k.mdb") == before);
    EXPECT_GT(ended, 3);
}

TEST_F(HardTimes, ShowsAgainWhatIsTypedWhenThePasswordPromptIsEnded) {
    int keyboard = -1, terminal = -1;
    ASSERT_EQ(::openpty(&keyboard, &terminal, nullptr, nullptr, nullptr), 0);
    const auto shows = [&] {
        termios settings{};
        return ::tcgetattr(terminal, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
    };
    const std::pair<std::string_view, int> cases[] = {{"richtig\n", 0}, {"halb\x03", SIGINT}, {"\x1C", SIGQUIT}};
    for (const auto& [keys, signal] : cases) {
        const pid_t process = start([&] {
            ::setsid();
            ::ioctl(terminal, TIOCSCTTY, 0);
            ::dup2(terminal, STDIN_FILENO);
            try {
                return readHiddenLine() == u"richtig" ? 0 : 1;
            } catch (const Interrupted& interrupted) {
                return std::raise(interrupted.signal);
            }
        });
        waitUntil([&] { return !shows(); });
        ASSERT_EQ(::write(keyboard, keys.data(), keys.size()), std::ssize(keys));
        const int status = statusOf(process);
        EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status), signal) << status;
        EXPECT_TRUE(shows()) << signal;
    }
    ::close(keyboard);
    ::close(terminal);
}

}  // namespace
}  // namespace kontodb
