#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include "tests/kontodb/Command.h"
#include "tools/kontodb/PasswordPrompt.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/StandardConsole.h"

/// What the system may do to kontodb: a full disk, missing rights, signals at any moment.
namespace kontodb {
namespace {

using Milliseconds = std::chrono::milliseconds;
constexpr int kDiskFull = 3;

/// Starts a copy of this process.
/// @param work  is run in the copy and returns its exit code
pid_t start(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    std::signal(SIGINT, SIG_DFL);  // a shell makes its background work ignore it
    std::signal(SIGQUIT, SIG_DFL);
    try {
        ::_exit(work());
    } catch (...) {
        ::_exit(2);
    }
}

/// @return the exit code of the process, or minus the signal that ended it
int endOf(pid_t process) {
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, 0), process);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

class SystemFaults : public Command {
protected:
    static void make(const Text& accounts) {
        ASSERT_EQ(call({u"create", u"k.mdb", u"--password=", u"--accounts", accounts}).exitCode, kExitSuccess);
    }

    /// @param limitBytes  no file may become longer, as on a full disk
    /// @return the exit code; kDiskFull if the command reports a full disk
    static int callWithin(rlim_t limitBytes, const std::vector<Text>& arguments) {
        return endOf(start([&] {
            const rlimit limit{limitBytes, limitBytes};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return kExitError;
            const Outcome outcome = call(arguments);
            return outcome.errors.find("Nicht genügend Speicherplatz") != std::string::npos ? kDiskFull
                                                                                            : outcome.exitCode;
        }));
    }
};

TEST_F(SystemFaults, WritesAllOrNothingWhereverTheDiskBecomesFull) {
    make(u"40");
    const std::string before = contentOf("k.mdb");
    const Text update = u"UPDATE Benutzerkonto SET BenKTO_ServerPath = '" + Text(200, u'ä') + u"'";
    for (const auto& arguments : {std::vector<Text>{u"exec", u"k.mdb", update, u"--all"},
                                  std::vector<Text>{u"create", u"neu.mdb", u"--accounts", u"40", u"--password="}}) {
        const auto names = this->names();
        const std::string old = contentOf(arguments[1]);
        int code = kDiskFull;
        for (rlim_t limit = 0; code == kDiskFull; limit += 5003) {
            code = callWithin(limit, arguments);
            EXPECT_EQ(contentOf(arguments[1]) == old, code == kDiskFull) << limit;
            EXPECT_EQ(this->names() == names, code == kDiskFull || !old.empty()) << limit;
        }
        EXPECT_EQ(code, kExitSuccess);
    }
    EXPECT_EQ(contentOf("neu.mdb"), before);
    expect("\n$ check k.mdb\nIn Ordnung: …\n");
}

TEST_F(SystemFaults, SaysWhatIsWriteProtected) {
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
        const auto tryIt = [&, &arguments = arguments, &error = error] {
            if (::geteuid() == 0 && ::setuid(65534) != 0) return 1;  // root may write everywhere
            const Outcome outcome = call(arguments);
            if (outcome.errors.find(error) != std::string::npos) return 0;
            std::cerr << outcome.errors << "wanted: " << error << std::endl;
            return 1;
        };
        EXPECT_EQ(endOf(start(tryIt)), 0);
    }
    fs::permissions(".", fs::perms::owner_all);
}

TEST_F(SystemFaults, LeavesNoIncompleteFileWhenASignalEndsIt) {
    const auto endsLeaving = [&](const std::vector<Text>& arguments, int signal, const std::vector<std::string>& left) {
        const std::size_t before = names().size();
        const pid_t process = start([&] { return call(arguments).exitCode; });
        while (names().size() == before)
            std::this_thread::sleep_for(Milliseconds(2));
        ::kill(process, signal);
        EXPECT_EQ(endOf(process), -signal);
        EXPECT_EQ(names(), left);
    };
    const std::vector<Text> creating = {u"create", u"k.mdb", u"--accounts", u"1000000"};
    endsLeaving(creating, SIGINT, {});
    endsLeaving(creating, SIGTERM, {});
    endsLeaving(creating, SIGKILL, {"k.mdb-neu-1"});
    make(u"20000");
    endsLeaving({u"compact", u"k.mdb", u"neu.mdb"}, SIGINT, {"k.mdb", "k.mdb-neu-1"});
}

TEST_F(SystemFaults, ExecutesAllStatementsOrNoneWhenASignalEndsIt) {
    make(u"800");
    const std::string before = contentOf("k.mdb");
    write("a.sql",
          "UPDATE Benutzerkonto SET BenKTO_Name = 'x';\n"
          "DELETE FROM Benutzerkonto WHERE BenKTO_ID > 700");
    const std::vector<Text> executing = {u"exec", u"k.mdb", u"--all", u"--file", u"a.sql"};
    const auto began = std::chrono::steady_clock::now();
    ASSERT_EQ(call(executing).printed, "800\n100\n");
    const auto step = (std::chrono::steady_clock::now() - began) / 16;
    const std::string after = contentOf("k.mdb");
    for (const int signal : {SIGINT, SIGKILL}) {
        int ended = 0, journals = 0;
        // Ends 20 runs at different moments. If SIGKILL left no journal, ends further runs when the journal appears.
        for (int i = 0; i < 20 || (signal == SIGKILL && journals == 0 && i < 200); ++i) {
            write("k.mdb", before);
            const pid_t process = start([&] { return call(executing).exitCode; });
            const auto end = std::chrono::steady_clock::now() + (i < 20 ? i * step : 32 * step);
            while (std::chrono::steady_clock::now() < end && (i < 20 || !std::filesystem::exists("k.mdb-journal")))
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            ::kill(process, signal);
            const bool isDone = endOf(process) == kExitSuccess;
            if (std::filesystem::exists("k.mdb-journal")) {
                ++journals;
                expect(R"(
$ query k.mdb "SELECT * FROM Benutzerkonto"
! kontodb: …hinterlassen…
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID = 0" --dry-run
! kontodb: …hinterlassen…
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID = 0"
0
)");
            }
            const std::string left = contentOf("k.mdb");
            EXPECT_TRUE(left == after || (left == before && !isDone)) << signal << ", step " << i;
            ended += left == before ? 1 : 0;
        }
        EXPECT_GT(ended, 3);
        EXPECT_EQ(journals > 0, signal == SIGKILL);
    }
    EXPECT_FALSE(std::filesystem::exists("k.mdb-journal"));
}

TEST_F(SystemFaults, ReportsOutputThatCannotBeWritten) {
    const auto print = [](const char* file) {
        ::dup2(::open(file, O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
        StandardConsole console;
        console.print("Größe\n");
        console.flush();
        return 0;
    };
    EXPECT_EQ(endOf(start([&] { return print("printed.txt"); })), 0);
    EXPECT_EQ(contentOf("printed.txt"), "Größe\n");
    EXPECT_EQ(endOf(start([&] { return print("/dev/full"); })), 2);
}

TEST_F(SystemFaults, RestoresTheEchoWhenASignalEndsThePasswordPrompt) {
    int keyboard = -1, terminal = -1;
    ASSERT_EQ(::openpty(&keyboard, &terminal, nullptr, nullptr, nullptr), 0);
    const auto echoes = [&] {
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
        while (echoes())
            std::this_thread::sleep_for(Milliseconds(2));
        ASSERT_EQ(::write(keyboard, keys.data(), keys.size()), std::ssize(keys));
        EXPECT_EQ(endOf(process), -signal);
        EXPECT_TRUE(echoes()) << signal;
    }
    ::close(keyboard);
    ::close(terminal);
}

}  // namespace
}  // namespace kontodb
