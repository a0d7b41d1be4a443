#include "engine/filesystem/ConfigFile.h"

#include "tests/support/Capture.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <utility>
#include <sys/stat.h>

using quorl::filesystem::ConfigFile;
using testing::HasSubstr;

namespace {

/// A settings file as the game's would be: typed fields, a hidden debug switch, two written sections.
class Settings : public ConfigFile {
public:
    using ConfigFile::ConfigFile;

    void ReadConfig() override {
        ReadFromINI("general", General(), true);
        ReadFromINI("controls", Controls(), true);
        ReadFromINI("debug", {{this, "debug_window", &debugWindow, CONF_BOOL}}, false);
    }
    void WriteConfig() override {
        WriteToINI("general", General());
        WriteToINI("controls", Controls());
    }

    std::string name = "player";
    bool fullscreen = false;
    int volume = 50;
    float fov = 90.0f;
    InputBinding jump;
    bool debugWindow = false;

private:
    std::vector<Conf> General() {
        return {
            {this, "name", &name, CONF_STRING},
            {this, "fullscreen", &fullscreen, CONF_BOOL},
            {this, "volume", &volume, CONF_INT},
            {this, "fov", &fov, CONF_FLOAT},
        };
    }
    std::vector<Conf> Controls() { return {{this, "jump", &jump, CONF_INPUT_BINDING}}; }
};

class ConfigFileTest : public testing::Test {
protected:
    /// Reads `content` as settings.ini and returns what was printed on stderr meanwhile.
    std::string ReadSettings(std::string const& content) {
        WriteFile(path, content);
        return StderrOf([&] { settings.ReadConfig(); });
    }

    TempDirectory directory;
    std::string path = directory.File("settings.ini");
    Settings settings{path};
};

TEST_F(ConfigFileTest, ReadsOnlyTheNamedSectionTheLastOfRepeatedKeysAndTheTrimmedRestOfTheLine) {
    auto errors = ReadSettings("volume = 1\n"
                               "[audio]\n"
                               "volume = 2\n"
                               "# comment\n"
                               "; another\n"
                               "  [ general ]  \n"
                               "   name\t=  a = b # not a comment ; either  \n"
                               "volume = 3\n"
                               "volume = -4\n"
                               "[other]\n"
                               "volume = 5\n");
    // Only the key before any section is reported, not the keys the file lacks.
    EXPECT_EQ(errors, path + ":1: not inside a valid [section], line skipped: \"volume = 1\"\n");
    EXPECT_EQ(settings.volume, -4);
    EXPECT_EQ(settings.name, "a = b # not a comment ; either");
    EXPECT_FLOAT_EQ(settings.fov, 90.0f) << "a missing key leaves its field as it was";
}

TEST_F(ConfigFileTest, MalformedLinesAndBadValuesAreReportedOnceAndSkippedAndTheRestIsRead) {
    settings.jump.key = 87;
    auto errors = ReadSettings("[general]\n"
                               "name = Ada\n"
                               "this line has no equals sign\n"
                               "volume = loud\n"
                               "fullscreen = maybe\n"
                               "fov = 1e999\n"
                               "[controls\n"
                               "jump = key=1\n"
                               "[controls]\n"
                               "jump = key=32 trigger=1\n"
                               "[debug]\n"
                               "= 5\n"
                               "debug_window = yes\n");
    for (int line : {3, 4, 5, 6, 7, 8, 10, 12})
        EXPECT_EQ(CountOccurrences(errors, path + ":" + std::to_string(line) + ":"), 1u) << errors;
    EXPECT_EQ(CountOccurrences(errors, "\n"), 8u) << errors;
    EXPECT_THAT(errors, HasSubstr("\"this line has no equals sign\""));
    EXPECT_THAT(errors, HasSubstr(path + ":4: value of \"volume\" ignored"));
    EXPECT_THAT(errors, HasSubstr(path + ":10: value of \"jump\" ignored: unknown input binding part \"trigger\""));
    EXPECT_EQ(settings.name, "Ada");
    EXPECT_TRUE(settings.debugWindow);
    // Bad values keep what the fields held; the keys after the broken header belong to no section at all.
    EXPECT_EQ(settings.volume, 50);
    EXPECT_FALSE(settings.fullscreen);
    EXPECT_FLOAT_EQ(settings.fov, 90.0f);
    EXPECT_EQ(settings.jump.key, 87);

    EXPECT_EQ(StderrOf([&] { settings.ReadConfig(); }), "") << "an unchanged file is not reported again";
}

TEST_F(ConfigFileTest, UnreadableFileIsReportedOnceWithItsReasonAndNotWrittenUntilItReads) {
    std::filesystem::create_directory(path);
    auto errors = StderrOf([&] { settings.ReadConfig(); });
    EXPECT_EQ(CountOccurrences(errors, "\"" + path + "\""), 1u) << errors;
    EXPECT_THAT(errors, HasSubstr("Is a directory"));
    EXPECT_EQ(settings.volume, 50);

    // Readable again, but the fields hold defaults rather than what it says: a write would replace the user's values.
    std::filesystem::remove(path);
    WriteFile(path, "[general]\nvolume = 7\n");
    EXPECT_THAT(ErrorOf([&] { settings.WriteConfig(); }), HasSubstr("\"" + path + "\" is not written"));
    EXPECT_EQ(ReadFile(path), "[general]\nvolume = 7\n");
    settings.ReadConfig();
    EXPECT_NO_THROW(settings.WriteConfig());
    EXPECT_THAT(ReadFile(path), HasSubstr("volume = 7\n"));
}

// EntityConfigTest reads every content file through the section form, comments, blank lines and empty sections too.
TEST_F(ConfigFileTest, SectionFormReportsLinesBeforeTheFirstSectionAndSplitsTheRestAtSpaceOrEquals) {
    WriteFile(path, "orphan 1 2\n[JOINT arm]\nposition 0 1 2\nlinear_x = -1 0 1\n");
    std::vector<std::string> seen;
    auto errors = StderrOf([&] {
        settings.ReadFromINI([&](std::stringstream& header, std::vector<ConfigFile::ConfLineStream>& lines) {
            seen.push_back("[" + header.str() + "]");
            for (auto& line : lines)
                seen.push_back(line.key.str() + ": " + line.rest.str());
        });
    });
    EXPECT_THAT(seen, testing::ElementsAre("[JOINT arm]", "position: 0 1 2", "linear_x: -1 0 1"));
    EXPECT_THAT(errors, HasSubstr(path + ":1:"));
}

TEST_F(ConfigFileTest, WriteKeepsEverythingItDoesNotOwnAndAddsKeysAfterTheirSectionAndSectionsAtTheEnd) {
    ReadSettings("# Meridon settings\n"
                 "\n"
                 "[general]\n"
                 "name=Ada\n"
                 "  volume =   50\n"
                 "mystery_key = keep me\n"
                 "# closing note of general\n"
                 "\n"
                 "\n"
                 "[debug]\n"
                 "debug_window = yes");
    settings.volume = 75;
    settings.jump.key = 32;

    settings.WriteConfig();

    EXPECT_EQ(ReadFile(path), "# Meridon settings\n"
                              "\n"
                              "[general]\n"
                              "name=Ada\n"
                              "volume = 75\n"
                              "mystery_key = keep me\n"
                              "# closing note of general\n"
                              "fullscreen = false\n"
                              "fov = 90\n"
                              "\n"
                              "\n"
                              "[debug]\n"
                              "debug_window = yes\n"
                              "\n"
                              "[controls]\n"
                              "jump = key=KEY_SPACE\n");
}

TEST_F(ConfigFileTest, WriteLeavesLinesThatHoldTheValueOrDidNotParseUntouched) {
    std::string const original = "[general]\n"
                                 "name=player\n"
                                 "fullscreen = NO\n"
                                 "volume=+50\n"
                                 "fov = 9e1\n"
                                 "[controls]\n"
                                 "jump    =    key=32\n";
    ReadSettings(original);
    settings.WriteConfig();
    // "+50" is no number to the reader: the line stays as the user wrote it, for the user to mend.
    EXPECT_EQ(ReadFile(path), original);
    // Once the program sets the value, its value is what the file must hold.
    settings.volume = 60;
    settings.WriteConfig();
    EXPECT_NE(ReadFile(path).find("volume = 60\n"), std::string::npos) << ReadFile(path);
    // A bad line the user then deletes is no longer kept from the write: the key comes back.
    ReadSettings("[general]\nvolume = loud\n");
    ReadSettings("[general]\n");
    settings.WriteConfig();
    EXPECT_THAT(ReadFile(path), HasSubstr("\nvolume = 60\n"));
}

// GameSettingsTest reads back what it writes; here the form of each type, and of a file started from nothing.
TEST_F(ConfigFileTest, AMissingFileReadsQuietlyAndIsWrittenWhole) {
    EXPECT_EQ(StderrOf([&] { settings.ReadConfig(); }), "");
    settings.name = "Ada Lovelace";
    settings.fullscreen = true;
    settings.volume = -3;
    settings.fov = 0.1f;
    settings.jump.gamepad_axis = 1;
    settings.jump.gamepad_axis_sign = -1;
    settings.WriteConfig();

    EXPECT_EQ(ReadFile(path), "[general]\n"
                              "name = Ada Lovelace\n"
                              "fullscreen = true\n"
                              "volume = -3\n"
                              "fov = 0.1\n"
                              "\n"
                              "[controls]\n"
                              "jump = gamepad_axis=GAMEPAD_AXIS_LEFT_Y gamepad_axis_sign=-1\n");
}

TEST_F(ConfigFileTest, ReadsAndKeepsCrlfLineEndsAndTheByteOrderMark) {
    ReadSettings("\xEF\xBB\xBF[general]\r\nvolume = 1\r\n");
    EXPECT_EQ(settings.volume, 1);
    settings.volume = 2;
    settings.WriteToINI("general", {{&settings, "volume", &settings.volume, ConfigFile::CONF_INT},
                                    {&settings, "name", &settings.name, ConfigFile::CONF_STRING}});
    EXPECT_EQ(ReadFile(path), "\xEF\xBB\xBF[general]\r\nvolume = 2\r\nname = player\r\n");
}

TEST_F(ConfigFileTest, WriteReplacesTheFileWithoutLeftoversAndKeepsItsPermissions) {
    WriteFile(path, "[general]\nvolume = 1\n");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    for (int volume = 0; volume < 3; ++volume) {
        settings.volume = volume;
        settings.WriteConfig();
    }
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(directory.Path()))
        names.push_back(entry.path().filename().string());
    EXPECT_EQ(names, std::vector<std::string>{"settings.ini"});
    auto permissions = std::filesystem::status(path).permissions();
    EXPECT_EQ(permissions, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                               std::filesystem::perms::group_read);
}

TEST_F(ConfigFileTest, WriteFailuresNameThePathAndReasonOrRefuseValuesTheFileCannotHoldAndKeepTheFile) {
    Settings unwritable(directory.File("no-such-folder/settings.ini"));
    auto const error = ErrorOf([&] { unwritable.WriteConfig(); });
    EXPECT_THAT(error, HasSubstr(unwritable.Path()));
    EXPECT_THAT(error, HasSubstr("No such file or directory"));

    std::string const original = "[general]\nname = Ada\n";
    ReadSettings(original);
    settings.name = "two\nlines";
    EXPECT_THROW(settings.WriteConfig(), std::invalid_argument);
    EXPECT_EQ(ReadFile(path), original);
}

TEST_F(ConfigFileTest, BaseReadsNothingAndCannotWrite) {
    ConfigFile plain(path);
    EXPECT_NO_THROW(plain.ReadConfig());
    EXPECT_EQ(ErrorOf([&] { plain.WriteConfig(); }), "WriteConfig() not implemented");
}

/// Counts its reads so that a test can wait for the reload thread.
class WatchedSettings : public ConfigFile {
public:
    WatchedSettings(std::string const& path, int intervalMs) : ConfigFile(path, intervalMs) {}
    ~WatchedSettings() override { StopAutoReloadThread(); }

    void ReadConfig() override {
        ReadFromINI("general", {{this, "volume", &volume, CONF_INT}}, true);
        std::lock_guard lock(_readsMutex);
        ++_reads;
        _readsChanged.notify_all();
        if (std::exchange(failNextRead, false))
            throw std::runtime_error("simulated failure");
    }

    /// Whether ReadConfig has run `count` times in all, waiting up to a minute for it.
    bool WaitForReads(int count) {
        std::unique_lock lock(_readsMutex);
        return _readsChanged.wait_for(lock, std::chrono::minutes(1), [&] { return _reads >= count; });
    }

    /// Written by the reload thread under Mutex().
    int volume = 0;
    bool failNextRead = false;

private:
    std::mutex _readsMutex;
    std::condition_variable _readsChanged;
    int _reads = 0;
};

/// Replaces the file with a write time clearly later than before, whatever the file system's time resolution. The
/// new file appears whole, by rename, so the watcher never sees it half-written or with its first write time.
void EditFile(std::string const& path, std::string const& content) {
    auto before = std::filesystem::exists(path) ? std::filesystem::last_write_time(path)
                                                : std::filesystem::file_time_type::clock::now();
    std::string next = path + ".next";
    WriteFile(next, content);
    std::filesystem::last_write_time(next, before + std::chrono::seconds(10));
    std::filesystem::rename(next, path);
}

TEST_F(ConfigFileTest, AutoReloadLoadsAFileThatAppearsOrChangesAndKeepsWatchingAfterAFailedRead) {
    WatchedSettings watched(path, 10);
    watched.failNextRead = true;
    watched.StartAutoReloadThread();
    watched.StartAutoReloadThread();
    auto errors = StderrOf([&] {
        EditFile(path, "[general]\nvolume = 1\n");
        ASSERT_TRUE(watched.WaitForReads(1));
        EditFile(path, "[general]\nvolume = 2\n");
        ASSERT_TRUE(watched.WaitForReads(2));
    });
    EXPECT_THAT(errors, HasSubstr("reloading \"" + path + "\" failed: simulated failure"));
    std::lock_guard lock(watched.Mutex());
    EXPECT_EQ(watched.volume, 2);
}

TEST_F(ConfigFileTest, StopDoesNotWaitOutThePollInterval) {
    WatchedSettings watched(path, 3'600'000);
    watched.StartAutoReloadThread();
    auto stopped = std::async(std::launch::async, [&] { watched.StopAutoReloadThread(); });
    // An hour-long interval: a stop that slept it out would blow far past this generous bound.
    ASSERT_EQ(stopped.wait_for(std::chrono::minutes(1)), std::future_status::ready);
    watched.StopAutoReloadThread();
}

}
