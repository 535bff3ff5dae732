#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <tuple>

#include "base/RuntimeError.h"
#include "platform/Platform.h"
#include "tests/support/FakeHost.h"

/// Fakes of the machine's services that behave like the real ones; all note their calls in one log.
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

struct FakeSettingsFile : platform::SettingsFile {
    explicit FakeSettingsFile(Log& log) : log_(log) {}

    using Place = std::tuple<base::Text, base::Text, base::Text>;  ///< path, section, key
    std::map<Place, base::Text> settings;

    std::size_t read(base::TextView section, base::TextView key, base::TextView defaultValue, base::Text& reply,
                     base::TextView filePath) override {
        log_.push_back("read setting " + base::toUtf8(key));
        const auto found = settings.find(Place(filePath, section, key));
        const base::TextView value = found != settings.end() ? base::TextView{found->second} : defaultValue;
        const std::size_t count = std::min(value.size(), reply.size() - 1);
        std::copy_n(value.begin(), count, reply.begin());
        reply[count] = u'\0';
        return count;
    }

private:
    Log& log_;
};

struct FakeProgramFolder : platform::ProgramFolder {
    base::Text folder = u"C:\\Programm";
    base::Text path() const override { return folder; }
};

struct FakeFileSystem : platform::FileSystem {
    explicit FakeFileSystem(Log& log) : log_(log) {}

    std::set<base::Text> files;

    std::unique_ptr<platform::FileSystemObject> createObject() override { return std::make_unique<Object>(*this); }

private:
    struct Object : platform::FileSystemObject {
        explicit Object(FakeFileSystem& system) : system_(system) { system_.log_.push_back("FSO made"); }
        Object(const Object&) = delete;
        Object& operator=(const Object&) = delete;
        ~Object() override { system_.log_.push_back("FSO gone"); }
        bool FileExists(base::TextView path) const override { return system_.files.contains(base::Text(path)); }
        FakeFileSystem& system_;
    };

    Log& log_;
};

struct FakeMessageBoxes : platform::MessageBoxes {
    explicit FakeMessageBoxes(Log& log) : log_(log) {}

    Answer answer = Answer::Ok;
    std::function<void()> whileShown;  ///< what happens before the user answers

    Answer show(base::TextView text, Buttons buttons, Icon icon) override {
        log_.push_back("box " + base::toUtf8(text) + (buttons == Buttons::Ok ? " [OK]" : " [Yes/No]") +
                       (icon == Icon::Critical   ? " critical"
                        : icon == Icon::Question ? " question"
                                                 : " information"));
        if (whileShown) whileShown();
        return answer;
    }

private:
    Log& log_;
};

struct FakeMousePointer : platform::MousePointer {
    std::vector<Shape> shapes;
    void set(Shape shape) override { shapes.push_back(shape); }
};

struct FakeFolderChooser : platform::FolderChooser {
    explicit FakeFolderChooser(Log& log) : log_(log) {}

    bool confirmed = true;
    base::Text path;                   ///< what the shell writes into the buffer; empty: it writes nothing
    std::function<void()> whileShown;  ///< what happens before the user answers

    bool choose(platform::WindowHandle owner, base::TextView title, base::Text& buffer) override {
        log_.push_back("choose folder for window " + std::to_string(owner) + ": " + base::toUtf8(title));
        EXPECT_EQ(buffer, base::Text(260, u' '));
        if (whileShown) whileShown();
        if (confirmed) std::copy(path.begin(), path.end(), buffer.begin());
        return confirmed;
    }

private:
    Log& log_;
};

/// German conversions as far as the tests need them; texts are compared ignoring the case of A to Z.
struct FakeRegional : platform::Regional {
    base::Text toText(const base::Value& value) const override {
        if (base::isNull(value)) throw base::runtimeError(base::RuntimeErrorNumber::InvalidUseOfNull);
        if (const auto* text = std::get_if<base::Text>(&value)) return *text;
        if (const auto* flag = std::get_if<bool>(&value)) return *flag ? u"Wahr" : u"Falsch";
        if (const auto* number = std::get_if<std::int16_t>(&value)) return base::decimal(*number);
        if (const auto* number = std::get_if<std::int32_t>(&value)) return base::decimal(*number);
        throw base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
    }
    std::int32_t toLong(base::TextView text) const override {
        std::string digits = base::toUtf8(base::trimBlanks(text));
        std::replace(digits.begin(), digits.end(), ',', '.');
        if (digits.starts_with('+')) digits.erase(0, 1);
        double number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error != std::errc() || end != digits.data() + digits.size()) {
            throw base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
        }
        number = std::nearbyint(number);
        if (number < -2147483648.0 || number > 2147483647.0) {
            throw base::runtimeError(base::RuntimeErrorNumber::Overflow);
        }
        return static_cast<std::int32_t>(number);
    }
    std::optional<base::Text> toSortableDate(base::TextView text) const override {
        if (text.size() != 10 || text[2] != u'.' || text[5] != u'.') return std::nullopt;
        return base::Text(text.substr(6)).append(text.substr(3, 2)).append(text.substr(0, 2));
    }
    int compare(base::TextView a, base::TextView b) const override { return folded(a).compare(folded(b)); }
    base::Bytes sortKey(base::TextView text) const override {
        base::Bytes key;
        for (const char16_t unit : folded(text)) {
            key.push_back(static_cast<std::uint8_t>(unit >> 8U));
            key.push_back(static_cast<std::uint8_t>(unit & 0xFFU));
        }
        return key;
    }

private:
    static base::Text folded(base::TextView text) {
        base::Text result(text);
        for (char16_t& unit : result)
            if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + 32);
        return result;
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
