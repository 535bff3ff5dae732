#pragma once

#include <algorithm>
#include <charconv>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <tuple>

#include "base/RuntimeError.h"
#include "platform/Platform.h"
#include "tests/support/FakeHost.h"

/// Fakes of the machine's services that behave like the real ones; most log their calls.
namespace test {

struct FakeWindowMessages : platform::WindowMessages {
    struct Sent {
        platform::WindowHandle window;
        std::uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
    };
    std::vector<Sent> sent;
    std::function<std::intptr_t(const Sent&)> answer = [](const Sent&) { return 0; };

    std::intptr_t send(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) override {
        sent.push_back({window, message, wParam, lParam});
        return answer(sent.back());
    }
};

/// A service that logs its calls.
struct Logging {
    explicit Logging(Log& callLog) : log(callLog) {}
    Log& log;
};

struct FakeSettingsFile : platform::SettingsFile, Logging {
    using Logging::Logging;
    using Place = std::tuple<base::Text, base::Text, base::Text>;  ///< path, section, key
    std::map<Place, base::Text> settings;

    std::size_t read(base::TextView section, base::TextView key, base::TextView defaultValue, base::Text& reply,
                     base::TextView filePath) override {
        log.push_back("read setting " + base::toUtf8(key));
        const auto found = settings.find(Place(filePath, section, key));
        const base::TextView value = found != settings.end() ? base::TextView{found->second} : defaultValue;
        const std::size_t count = std::min(value.size(), reply.size() - 1);
        std::copy_n(value.begin(), count, reply.begin());
        reply[count] = u'\0';
        return count;
    }
};

struct FakeProgramFolder : platform::ProgramFolder {
    base::Text folder = u"C:\\Programm";
    base::Text path() const override { return folder; }
};

struct FakeFileSystem : platform::FileSystem, Logging {
    using Logging::Logging;
    std::set<base::Text> files;

    std::unique_ptr<platform::FileSystemObject> createObject() override { return std::make_unique<Object>(*this); }

private:
    struct Object : platform::FileSystemObject {
        explicit Object(FakeFileSystem& system) : system_(system) { system_.log.push_back("FSO made"); }
        Object(const Object&) = delete;
        Object& operator=(const Object&) = delete;
        ~Object() override { system_.log.push_back("FSO gone"); }
        bool FileExists(base::TextView path) const override { return system_.files.contains(base::Text(path)); }
        FakeFileSystem& system_;
    };
};

struct FakeMessageBoxes : platform::MessageBoxes, Logging {
    using Logging::Logging;
    Answer answer = Answer::Ok;
    std::function<void()> whileShown;  ///< what happens before the user answers

    Answer show(base::TextView text, Buttons buttons, Icon icon) override {
        log.push_back("box " + base::toUtf8(text) + (buttons == Buttons::Ok ? " [OK]" : " [Yes/No]") +
                      (icon == Icon::Critical   ? " critical"
                       : icon == Icon::Question ? " question"
                                                : " information"));
        if (whileShown) whileShown();
        return answer;
    }
};

struct FakeMousePointer : platform::MousePointer {
    std::vector<Shape> shapes;
    void set(Shape shape) override { shapes.push_back(shape); }
};

struct FakeFolderChooser : platform::FolderChooser, Logging {
    using Logging::Logging;
    bool confirmed = true;
    base::Text path;                   ///< what the shell writes into the buffer; empty: it writes nothing
    std::function<void()> whileShown;  ///< what happens before the user answers

    bool choose(platform::WindowHandle owner, base::TextView title, base::Text& buffer) override {
        log.push_back("choose folder for window " + std::to_string(owner) + ": " + base::toUtf8(title));
        EXPECT_EQ(buffer, base::Text(260, u' '));
        if (whileShown) whileShown();
        if (confirmed) std::copy(path.begin(), path.end(), buffer.begin());
        return confirmed;
    }
};

/// Knows whole numbers and dates like 24.12.2023; compares texts ignoring the case of A to Z.
struct FakeRegional : platform::Regional {
    base::Text toText(const base::Value& value) const override {
        if (base::isNull(value)) throw base::runtimeError(base::RuntimeErrorNumber::InvalidUseOfNull);
        if (const auto* text = std::get_if<base::Text>(&value)) return *text;
        if (const auto* number = std::get_if<std::int32_t>(&value)) return base::decimal(*number);
        throw base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
    }
    std::int32_t toLong(base::TextView text) const override {
        const std::string digits = base::toUtf8(text);
        std::int32_t number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc::result_out_of_range) throw base::runtimeError(base::RuntimeErrorNumber::Overflow);
        if (error != std::errc() || end != digits.data() + digits.size())
            throw base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
        return number;
    }
    std::optional<base::Text> toSortableDate(base::TextView text) const override {
        if (text.size() != 10 || text[2] != u'.' || text[5] != u'.') return std::nullopt;
        return base::Text(text.substr(6)).append(text.substr(3, 2)).append(text.substr(0, 2));
    }
    int compare(base::TextView a, base::TextView b) const override { return folded(a).compare(folded(b)); }
    base::Bytes sortKey(base::TextView text) const override {
        const std::string key = folded(text);
        return {key.begin(), key.end()};
    }

private:
    static std::string folded(base::TextView text) {
        base::Text result(text);
        std::transform(result.begin(), result.end(), result.begin(), base::asciiLower);
        return base::toUtf8(result);
    }
};

struct FakeServices {
    explicit FakeServices(Log& log) : settingsFile(log), fileSystem(log), messageBoxes(log), folderChooser(log) {}

    FakeWindowMessages windowMessages;
    FakeSettingsFile settingsFile;
    FakeProgramFolder programFolder;
    FakeFileSystem fileSystem;
    FakeMessageBoxes messageBoxes;
    FakeMousePointer mousePointer;
    FakeFolderChooser folderChooser;
    FakeRegional regional;

    platform::Services all() {
        return {windowMessages, settingsFile, programFolder, fileSystem,
                messageBoxes,   mousePointer, folderChooser, regional};
    }
};

}  // namespace test
