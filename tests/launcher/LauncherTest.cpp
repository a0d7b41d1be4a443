#include "modules/MERIDON_Mod.h"
#include "tests/support/Process.h"
#include "tests/support/TempDirectory.h"

#include <gtest/gtest.h>

#include <stb/stb_image.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/// Runs the real launcher in the tests' game tree, where the test modules are, on a world of the test's own unless
/// the options name one: a world is held by one server at a time, and tests run side by side.
ProcessResult Launch(std::vector<std::string> options,
                     std::optional<std::chrono::milliseconds> terminateAfter = std::nullopt) {
    if (std::find(options.begin(), options.end(), "--world") == options.end())
        options.insert(options.begin(), {"--world", testing::UnitTest::GetInstance()->current_test_info()->name()});
    options.insert(options.begin(), MERIDON_LAUNCHER);
    return RunProcess(options, std::filesystem::current_path().string(), terminateAfter);
}

}

TEST(LauncherTest, DedicatedServerRunsExactlyTheTicksAskedFor) {
    auto result = Launch({"--server", "--ticks", "200", "--server-hz", "0", "--modules", "TEST_alpha"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("TEST_alpha ticks: 200 before, 200 game\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "");
}

TEST(LauncherTest, ClientLoadsEveryClassOfANamedModuleAndCreatesTheWorld) {
    std::filesystem::remove_all("../Meridon-data/server/worlds/launcher-test");
    auto result = Launch({"--ticks", "3", "--server-hz", "0", "--world", "launcher-test", "--modules", "TEST_alpha",
                          "--mods", "TEST_beta", "--verbose"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (char const* file : {"TEST_alpha.GAME_Init.so", "TEST_alpha.GAME_Mod.so", "TEST_alpha.SERVER_Mod.so"})
        EXPECT_NE(result.out.find(std::string("loaded modules/TEST_alpha/") + file), std::string::npos) << file;
    EXPECT_NE(result.out.find("TEST_alpha ticks: 3 before, 3 game\n"), std::string::npos) << result.out;
    EXPECT_TRUE(std::filesystem::is_directory("../Meridon-data/server/worlds/launcher-test/entities"));
}

TEST(LauncherTest, HeadlessClientRendersAndSavesItsLastFrame) {
    std::string const path = "../Meridon-data/screenshots/launcher-test.png";
    std::filesystem::remove(path);
    auto result = Launch({"--ticks", "5", "--server-hz", "0", "--modules", "TEST_pattern", "--screenshot", path});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("Screenshot saved to " + path), std::string::npos) << result.out;

    int width = 0, height = 0, channels = 0;
    unsigned char* pixels = stbi_load(path.c_str(), &width, &height, &channels, 4);
    ASSERT_NE(pixels, nullptr) << stbi_failure_reason();
    auto at = [&](int x, int y) {
        unsigned char const* p = pixels + (y * width + x) * 4;
        return std::array<int, 4>{p[0], p[1], p[2], p[3]};
    };
    EXPECT_EQ(at(0, 0), (std::array<int, 4>{0, 0, 0, 255}));
    EXPECT_EQ(at(34, 34), (std::array<int, 4>{255, 0, 0, 255})) << "the module's pattern is missing";
    EXPECT_EQ(at(45, 45), (std::array<int, 4>{255, 255, 255, 255}));
    stbi_image_free(pixels);
}

TEST(LauncherTest, TerminationSignalQuitsCleanly) {
    auto result = Launch({"--server", "--server-hz", "200", "--modules", "TEST_alpha"},
                         std::chrono::milliseconds(500));
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("TEST_alpha ticks: "), std::string::npos) << "modules were unloaded: " << result.out;
}

TEST(LauncherTest, UnknownModuleIsAnErrorNamingIt) {
    auto result = Launch({"--server", "--ticks", "1", "--modules", "TEST_nowhere"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("module 'TEST_nowhere' has no SERVER_Mod library"), std::string::npos) << result.err;
}

TEST(LauncherTest, BadCommandLinesAreRefusedWithUsage) {
    auto unknown = Launch({"--frobnicate"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_NE(unknown.err.find("unknown option '--frobnicate'"), std::string::npos) << unknown.err;
    EXPECT_NE(unknown.err.find("Usage: meridon"), std::string::npos);

    auto badNumber = Launch({"--ticks", "ten"});
    EXPECT_EQ(badNumber.exitCode, 2);
    EXPECT_NE(badNumber.err.find("--ticks: 'ten' is not a valid value"), std::string::npos) << badNumber.err;

    auto missing = Launch({"--world"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_NE(missing.err.find("--world needs a value"), std::string::npos) << missing.err;
}

TEST(LauncherTest, ConfigurationMistakesAreErrorsNamingThem) {
    struct Case {
        char const* what;
        char const* file;  // launcher.ini's text; null for no file
        std::vector<std::string> options;
        std::string message;
    };
    std::string const ini = "launcher-config-case.ini";
    std::string const here = std::filesystem::current_path().string();
    std::vector<Case> const cases{
        {"missing --config file", nullptr, {"--config", "nowhere.ini"}, "--config: cannot read 'nowhere.ini': no such file"},
        {"unknown content module", "", {"--mods", "TEST_nowhere"}, "content module 'TEST_nowhere' has no library at"},
        {"content module of another version", "", {"--mods", "TEST_beta,TEST_version"},
         "content module 'TEST_version' is of module version " + std::to_string(MERIDON_MOD_VERSION + 1) +
             ", and this game takes version " + std::to_string(MERIDON_MOD_VERSION) + ": "},
        {"section in the wrong case", "[Launcher]\nserver_hz = 30\n", {},
         ":1: unknown section [Launcher]; the launcher reads [launcher]"},
        {"unknown key", "[launcher]\nworld_name = x\n", {}, ":2: unknown key \"world_name\""},
        {"negative rate in the file", "[launcher]\nserver_hz = -5\n", {}, ":2: server_hz: '-5' is not a valid value"},
        {"infinite rate in the file", "[launcher]\nserver_hz = inf\n", {}, ":2: server_hz: 'inf' is not a valid value"},
        {"fractional substeps in the file", "[launcher]\nserver_substeps = 2.5\n", {},
         ":2: server_substeps: '2.5' is not a valid value"},
        {"no substeps in the file", "[launcher]\nserver_substeps = 0\n", {},
         ":2: server_substeps: '0' is not a valid value: a whole number, 1 or more, is needed"},
        {"value that is no number in the file", "[launcher]\nserver_hz = fast\n", {},
         ":2: server_hz: 'fast' is not a valid value"},
        {"negative autosave in the file", "[launcher]\nautosave_minutes = -1\n", {},
         ":2: autosave_minutes: '-1' is not a valid value"},
        {"autosave that is no number on the command line", "", {"--autosave", "nan"},
         "--autosave: 'nan' is not a valid value"},
        {"key outside any section", "server_hz = 30\n[launcher]\n", {},
         ":1: not inside a valid [section]: \"server_hz = 30\""},
        {"header without its bracket", "[launcher\nserver_hz = 30\n", {},
         ":1: section header without a closing ']': \"[launcher\""},
        {"negative rate on the command line", "", {"--server-hz", "-5"}, "--server-hz: '-5' is not a valid value"},
        {"missing module folder in the file", "[launcher]\nmodule_path = nowhere\n", {},
         ":2: module_path: 'nowhere' is not a valid value: 'nowhere' is not a folder"},
        {"missing module folder on the command line", "", {"--module-path", MERIDON_TEST_MODULE_PATH ":nowhere"},
         "--module-path: '" MERIDON_TEST_MODULE_PATH ":nowhere' is not a valid value: 'nowhere' is not a folder"},
        {"content module in none of the module folders", "", {"--module-path", ".", "--mods", "TEST_elsewhere"},
         "content module 'TEST_elsewhere' has no library at " + here +
             "/modules/TEST_elsewhere/TEST_elsewhere.MERIDON_Mod.so, " + here +
             "/TEST_elsewhere/TEST_elsewhere.MERIDON_Mod.so\n"},
    };
    for (auto const& [what, file, options, message] : cases) {
        SCOPED_TRACE(what);
        std::vector<std::string> arguments{"--server", "--ticks", "1"};
        if (file) {
            std::ofstream(ini) << file;
            arguments.insert(arguments.end(), {"--config", ini});
        }
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto result = Launch(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
        EXPECT_EQ(result.out.find("Starting game"), std::string::npos) << "the game started";
    }
    std::filesystem::remove(ini);
}

TEST(LauncherTest, PlayerSettingsThatCannotBeReadOrAreOutOfRangeCostNeitherTheRendererNorTheFile) {
    enum Layout { Text, FolderInPlaceOfTheFile, FileInPlaceOfItsFolder };
    struct Case {
        char const* what;
        Layout layout;
        char const* text;
        std::vector<std::string> errors;
    };
    std::string const settings = "../Meridon-data/client/settings.ini";
    std::vector<Case> const cases{
        {"a folder in place of the file", FolderInPlaceOfTheFile, "", {"cannot read \"" + settings + "\": Is a directory"}},
        {"a file in place of its folder", FileInPlaceOfItsFolder, "mine", {"\"" + settings + "\": Not a directory"}},
        // No preset yet: the renderer saves the one it detects, and with it every setting.
        {"values out of range or that do not parse", Text, "[graphics]\nfov = -500\nrender_scale = abc\n",
         {settings + ":2: \"fov\" = -500 is outside 25..125; using 25",
          settings + ":3: value of \"render_scale\" ignored: expected a number, got \"abc\""}},
    };
    for (auto const& [what, layout, text, errors] : cases) {
        SCOPED_TRACE(what);
        // A game folder of its own, since the settings lie at a fixed place beside it.
        TempDirectory game;
        std::filesystem::create_directories(game.Path() / "root");
        for (char const* shared : {"game", "modules"})
            std::filesystem::create_directory_symlink(std::filesystem::absolute(shared), game.Path() / "root" / shared);
        auto const client = game.Path() / "Meridon-data/client";
        std::filesystem::create_directories(layout == FileInPlaceOfItsFolder ? client.parent_path() : client);
        if (layout == FolderInPlaceOfTheFile)
            std::filesystem::create_directory(client / "settings.ini");
        else
            WriteFile(layout == Text ? (client / "settings.ini").string() : client.string(), text);

        auto result = RunProcess({MERIDON_LAUNCHER, "--ticks", "3", "--server-hz", "0", "--screenshot", "../shot.png"},
                                 (game.Path() / "root").string());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_NE(result.out.find("Screenshot saved"), std::string::npos) << "no renderer: " << result.err;
        EXPECT_EQ(CountOccurrences(result.err, "\n"), errors.size()) << result.err;
        for (auto const& error : errors)
            EXPECT_NE(result.err.find(error), std::string::npos) << error << " in:\n" << result.err;
        if (layout == FolderInPlaceOfTheFile)
            EXPECT_TRUE(std::filesystem::is_empty(client / "settings.ini"));
        else if (layout == FileInPlaceOfItsFolder)
            EXPECT_EQ(ReadFile(client.string()), text);
        else
            EXPECT_NE(ReadFile((client / "settings.ini").string()).find("\nrender_scale = abc\n"), std::string::npos)
                << "the line that did not parse is the user's to mend";
    }
}

TEST(LauncherTest, ModulesAreLookedForInTheGameFolderThenInEachModulePathFolderInOrder) {
    // Libraries that do not open: a run that takes one of them fails, naming it.
    std::string const decoys = "module-path-decoys";
    for (std::string const name : {"TEST_alpha", "TEST_elsewhere"}) {
        std::filesystem::create_directories(decoys + "/" + name);
        std::ofstream(decoys + "/" + name + "/" + name + ".SERVER_Mod.so") << "not a library";
    }
    auto run = [&](std::string const& modulePath) {
        return Launch({"--server", "--ticks", "3", "--server-hz", "0", "--verbose", "--module-path", modulePath,
                       "--modules", "TEST_alpha,TEST_elsewhere", "--mods", "TEST_elsewhere"});
    };
    auto found = run(MERIDON_TEST_MODULE_PATH ":" + decoys);
    auto decoyFirst = run(decoys + ":" MERIDON_TEST_MODULE_PATH);
    std::filesystem::remove_all(decoys);

    EXPECT_EQ(found.exitCode, 0) << found.err;
    for (std::string const library : {"modules/TEST_alpha/TEST_alpha.SERVER_Mod.so",
                                      MERIDON_TEST_MODULE_PATH "/TEST_elsewhere/TEST_elsewhere.SERVER_Mod.so",
                                      MERIDON_TEST_MODULE_PATH "/TEST_elsewhere/TEST_elsewhere.MERIDON_Mod.so"})
        EXPECT_NE(found.out.find("meridon: loaded " + library + "\n"), std::string::npos)
            << library << " in:\n" << found.out;
    // The content module is the one the game started: it is in the registry after Game::Start.
    EXPECT_NE(found.out.find("meridon: module TEST_elsewhere: SERVER_Mod, MERIDON_Mod\n"), std::string::npos)
        << found.out;
    EXPECT_NE(found.out.find("TEST_elsewhere ticks: 3 before, 3 game\n"), std::string::npos) << found.out;

    EXPECT_EQ(decoyFirst.exitCode, 2);
    EXPECT_NE(decoyFirst.err.find("Module '" + decoys + "/TEST_elsewhere/TEST_elsewhere.SERVER_Mod' failed to load"),
              std::string::npos) << decoyFirst.err;
}

TEST(LauncherTest, ModulePathMayStandInLauncherIni) {
    std::string const ini = "launcher-module-path.ini";
    std::ofstream(ini) << "[launcher]\nmodule_path = " MERIDON_TEST_MODULE_PATH "\n";
    auto result = Launch({"--config", ini, "--server", "--ticks", "2", "--server-hz", "0", "--modules",
                          "TEST_elsewhere", "--mods", "TEST_elsewhere"});
    std::filesystem::remove(ini);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("TEST_elsewhere ticks: 2 before, 2 game\n"), std::string::npos) << result.out;
}

TEST(LauncherTest, HelpDescribesTheOptions) {
    auto result = Launch({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (char const* option : {"--server", "--ticks", "--seconds", "--world", "--mods", "--modules", "--module-path"})
        EXPECT_NE(result.out.find(option), std::string::npos) << option;
}

TEST(LauncherTest, SecondsLimitEndsTheRun) {
    auto result = Launch({"--server", "--seconds", "0.2", "--modules", "TEST_alpha"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST(LauncherTest, VersionAndVerboseSayWhatRunsAndWhatWasSaved) {
    auto version = Launch({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, "meridon " MERIDON_VERSION "\n");

    std::string const world = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::remove_all("../Meridon-data/server/worlds/" + world);
    // A client that gives its new world three saved entities. A run of more than a second shows a status line: the
    // pass that ends it prints one when due. TEST_entities has no version symbol and TEST_beta the game's own, so
    // both load.
    setenv("MERIDON_TEST_ENTITIES", "kept:3", 1);
    auto client = Launch({"--seconds", "1.2", "--modules", "TEST_alpha,TEST_entities", "--mods",
                          "TEST_entities,TEST_beta", "--verbose"});
    unsetenv("MERIDON_TEST_ENTITIES");
    EXPECT_EQ(client.exitCode, 0) << client.err;
    std::vector<std::string> const lines{
        "meridon: module TEST_alpha: GAME_Init, GAME_Mod, SERVER_Mod\n",
        "meridon: module TEST_beta: MERIDON_Mod\n",
        "meridon: module TEST_entities: SERVER_Mod, MERIDON_Mod\n",
        "meridon: entity type kept of module TEST_entities\n",
        "meridon: entity type crate of module TEST_entities\n",
        "meridon: world '" + world + "': 0 entities loaded\n",
        "meridon: world '" + world + "': 3 entities saved\n",
        "\nrender ",
    };
    for (auto const& line : lines)
        EXPECT_NE(client.out.find(line), std::string::npos) << line << " in:\n" << client.out;
    EXPECT_LT(client.out.find("entity type"), client.out.find("entities loaded")) << "types are listed before the load";

    auto server = Launch({"--server", "--ticks", "1", "--modules", "TEST_entities", "--mods", "TEST_entities",
                          "--verbose"});
    EXPECT_EQ(server.exitCode, 0) << server.err;
    EXPECT_NE(server.out.find("meridon: world '" + world + "': 3 entities loaded\n"), std::string::npos) << server.out;
    EXPECT_NE(server.out.find("meridon: world '" + world + "': 3 entities saved\n"), std::string::npos) << server.out;
    EXPECT_EQ(server.out.find("meridon: module TEST_alpha"), std::string::npos) << server.out;
}
