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

    Text file_ = path(u"Konten.mdb");
};

TEST_F(HardTimes, WritesAllOrNothingWhereTheRoomEndsAnywhere) {
    const Text password = u"--password=HwendorpliqZ", newFile = path(u"Neu.mdb");
    ASSERT_EQ(call({u"create", file_, u"--accounts", u"40"}).exitCode, kExitSuccess);
    const std::string before = contentOf(file_);
    // One appends pages first, the other only writes over old ones.
    for (const Text& statement : {u"UPDATE Benutzerkonto SET BenKTO_ServerPath = '" + Text(200, u'ä') + u"'",
                                  Text(u"DELETE FROM Benutzerkonto WHERE BenKTO_ID > 7")}) {
        std::ofstream(std::filesystem::path(file_), std::ios::binary) << before;
        int code = kDiskFull;
        for (rlim_t limit = 0; code != kExitSuccess; limit += 5003) {
            SCOPED_TRACE(limit);
            code = callWithin(limit, {u"exec", file_, statement, u"--all", password});
            EXPECT_EQ(contentOf(file_) == before, code == kDiskFull);
            EXPECT_EQ(names().size(), 1U);
            ASSERT_TRUE(code == kDiskFull || code == kExitSuccess) << code;
        }
        EXPECT_EQ(call({u"check", file_, password}).exitCode, kExitSuccess);
    }
    for (rlim_t limit = 0, code = kDiskFull; code != kExitSuccess; limit += 9001) {
        code = static_cast<rlim_t>(callWithin(limit, {u"create", newFile, u"--accounts", u"40"}));
        ASSERT_EQ(names().size(), code == kDiskFull ? 1U : 2U) << limit;
    }
    EXPECT_EQ(contentOf(newFile), before);
}

TEST_F(HardTimes, SaysWhatIsWriteProtected) {
    namespace fs = std::filesystem;
    ASSERT_EQ(call({u"create", file_, u"--password="}).exitCode, kExitSuccess);
    const Text change = u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('x')", target = path(u"Ziel.mdb");
    const struct {
        int fileRights;
        std::vector<Text> arguments;
        std::string error;
    } cases[] = {
        {0444, {u"exec", file_, change}, "Die Datei '" + base::toUtf8(file_) + "' ist schreibgeschützt"},
        {0666, {u"exec", file_, change}, "Der Ordner der Datei ist schreibgeschützt"},
        {0666, {u"backup", file_, target}, "Der Ordner von '" + base::toUtf8(target) + "' ist schreibgeschützt"},
        {0666, {u"create", target}, "Der Ordner von '" + base::toUtf8(target) + "' ist schreibgeschützt"},
        {0666, {u"check", folder_.path.u16string()}, "' ist ein Ordner."},
    };
    for (const auto& [fileRights, arguments, error] : cases) {
        fs::permissions(file_, static_cast<fs::perms>(fileRights));
        fs::permissions(folder_.path, static_cast<fs::perms>(0555));
        const int status = statusOf(start([&, &arguments = arguments, &error = error] {
            if (::geteuid() == 0 && ::setuid(65534) != 0) return 1;  // an administrator may write everywhere
            const Outcome outcome = call(arguments);
            if (outcome.errors.find(error) != std::string::npos) return 0;
            std::cerr << outcome.errors << "wanted: " << error << std::endl;
            return 1;
        }));
        EXPECT_EQ(status, 0);
    }
    fs::permissions(folder_.path, fs::perms::owner_all);
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
    const std::vector<Text> creating = {u"create", file_, u"--accounts", u"1000000"};
    endsLeaving(creating, SIGINT, {});
    endsLeaving(creating, SIGTERM, {});
    endsLeaving(creating, SIGKILL, {"Konten.mdb-neu-1"});
    ASSERT_EQ(call({u"create", file_, u"--accounts", u"20000"}).exitCode, kExitSuccess);
    endsLeaving({u"compact", file_, path(u"Ziel.mdb"), u"--password=HwendorpliqZ"}, SIGINT,
                {"Konten.mdb", "Konten.mdb-neu-1"});
    std::filesystem::remove(file_);
    EXPECT_EQ(call({u"create", file_}).exitCode, kExitSuccess);
}

TEST_F(HardTimes, ExecutesAllStatementsOrNoneWhenItIsEnded) {
    const Text password = u"--password=HwendorpliqZ", script = path(u"a.sql");
    ASSERT_EQ(call({u"create", file_, u"--accounts", u"2000"}).exitCode, kExitSuccess);
    const std::string before = contentOf(file_);
    std::ofstream(std::filesystem::path(script)) << "UPDATE Benutzerkonto SET BenKTO_Name = 'x';\n"
                                                    "DELETE FROM Benutzerkonto WHERE BenKTO_ID > 700";
    int ended = 0;
    for (int delay = 0, status = -1; status != 0; delay += 2) {
        std::ofstream(std::filesystem::path(file_), std::ios::binary) << before;
        const pid_t process = start([&] {
            return call({u"exec", file_, u"--all", u"--file", script, password}).exitCode;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        ::kill(process, SIGINT);
        status = statusOf(process);
        ASSERT_TRUE(status == 0 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGINT)) << status;
        EXPECT_EQ(names(), (std::vector<std::string>{"Konten.mdb", "a.sql"}));
        const std::string rows = call({u"query", file_, u"SELECT BenKTO_Name FROM Benutzerkonto", password}).printed;
        const auto lines = std::ranges::count(rows, '\n');
        if (contentOf(file_) == before) {
            EXPECT_NE(status, 0);
            ++ended;
        } else {
            EXPECT_EQ(lines, 701) << delay;
        }
    }
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
