#include "modules/MERIDON_Mod.h"
#include "tests/support/Process.h"
#include "tests/support/TempDirectory.h"

#include <gmock/gmock.h>

#include <stb/stb_image.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

using testing::HasSubstr;
using testing::Not;

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

TEST(LauncherTest, HeadlessClientRunsTheTicksAskedForAndSavesItsLastFrame) {
    std::string const path = "../Meridon-data/screenshots/launcher-test.png";
    std::filesystem::remove(path);
    auto result = Launch(
        {"--ticks", "5", "--server-hz", "0", "--modules", "TEST_pattern,TEST_alpha", "--screenshot", path});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("TEST_alpha ticks: 5 before, 5 game\n"));
    EXPECT_THAT(result.out, HasSubstr("Screenshot saved to " + path));

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
        {"unknown option", nullptr, {"--frobnicate"}, "unknown option '--frobnicate'\nUsage: meridon [options]\n"},
        {"option without its value", nullptr, {"--world"}, "--world needs a value"},
        {"value that is no number on the command line", nullptr, {"--ticks", "ten"},
         "--ticks: 'ten' is not a valid value"},
        {"unknown module", nullptr, {"--modules", "TEST_nowhere"}, "module 'TEST_nowhere' has no SERVER_Mod library"},
        {"missing --config file", nullptr, {"--config", "nowhere.ini"},
         "--config: cannot read 'nowhere.ini': no such file"},
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
        {"key outside any section", "server_hz = 30\n[launcher]\n", {},
         ":1: not inside a valid [section]: \"server_hz = 30\""},
        {"header without its bracket", "[launcher\nserver_hz = 30\n", {},
         ":1: section header without a closing ']': \"[launcher\""},
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
        EXPECT_THAT(result.err, HasSubstr(message));
        EXPECT_THAT(result.out, Not(HasSubstr("Starting game")));
    }
    std::filesystem::remove(ini);
}

TEST(LauncherTest, PlayerSettingsThatCannotBeReadOrAreOutOfRangeCostNeitherTheRendererNorTheFile) {
    struct Case {
        char const* what;
        char const* text;  // the file's text; null for a folder in place of the file
        std::vector<std::string> errors;
    };
    std::string const settings = "../Meridon-data/client/settings.ini";
    std::vector<Case> const cases{
        {"a folder in place of the file", nullptr, {"cannot read \"" + settings + "\": Is a directory"}},
        // No preset yet: the renderer saves the one it detects, and with it every setting.
        {"values out of range or that do not parse", "[graphics]\nfov = -500\nrender_scale = abc\n",
         {settings + ":2: \"fov\" = -500 is outside 25..125; using 25",
          settings + ":3: value of \"render_scale\" ignored: expected a number, got \"abc\""}},
    };
    for (auto const& [what, text, errors] : cases) {
        SCOPED_TRACE(what);
        // A game folder of its own, since the settings lie at a fixed place beside it.
        TempDirectory game;
        std::filesystem::create_directories(game.Path() / "root");
        for (char const* shared : {"game", "modules"})
            std::filesystem::create_directory_symlink(std::filesystem::absolute(shared), game.Path() / "root" / shared);
        auto const file = game.Path() / "Meridon-data/client/settings.ini";
        std::filesystem::create_directories(text ? file.parent_path() : file);
        if (text)
            WriteFile(file.string(), text);

        auto result = RunProcess({MERIDON_LAUNCHER, "--ticks", "3", "--server-hz", "0", "--screenshot", "../shot.png"},
                                 (game.Path() / "root").string());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_THAT(result.out, HasSubstr("Screenshot saved")) << "no renderer: " << result.err;
        EXPECT_EQ(CountOccurrences(result.err, "\n"), errors.size()) << result.err;
        for (auto const& error : errors)
            EXPECT_THAT(result.err, HasSubstr(error));
        if (text)
            EXPECT_THAT(ReadFile(file.string()), HasSubstr("\nrender_scale = abc\n"))
                << "the line that did not parse is the user's to mend";
        else
            EXPECT_TRUE(std::filesystem::is_empty(file));
    }
}

TEST(LauncherTest, ModulesAreLookedForInTheGameFolderThenInEachModulePathFolderInOrder) {
    // Libraries that do not open: a run that takes one of them fails, naming it.
    std::string const decoys = "module-path-decoys";
    for (std::string const name : {"TEST_alpha", "TEST_elsewhere"}) {
        std::filesystem::create_directories(decoys + "/" + name);
        std::ofstream(decoys + "/" + name + "/" + name + ".SERVER_Mod.so") << "not a library";
    }
    // The folders may stand in launcher.ini; the command line's win.
    std::string const ini = "launcher-module-path.ini";
    std::ofstream(ini) << "[launcher]\nmodule_path = " MERIDON_TEST_MODULE_PATH ":" << decoys << "\n";
    auto run = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--config", ini, "--server", "--ticks", "3", "--server-hz", "0", "--verbose",
                                       "--modules", "TEST_alpha,TEST_elsewhere", "--mods", "TEST_elsewhere"});
        return Launch(options);
    };
    auto found = run({});
    auto decoyFirst = run({"--module-path", decoys + ":" MERIDON_TEST_MODULE_PATH});
    std::filesystem::remove_all(decoys);
    std::filesystem::remove(ini);

    EXPECT_EQ(found.exitCode, 0) << found.err;
    EXPECT_EQ(found.err, "");
    for (std::string const library : {"modules/TEST_alpha/TEST_alpha.SERVER_Mod.so",
                                      MERIDON_TEST_MODULE_PATH "/TEST_elsewhere/TEST_elsewhere.SERVER_Mod.so",
                                      MERIDON_TEST_MODULE_PATH "/TEST_elsewhere/TEST_elsewhere.MERIDON_Mod.so"})
        EXPECT_THAT(found.out, HasSubstr("meridon: loaded " + library + "\n"));
    // The content module is the one the game started: it is in the registry after Game::Start.
    EXPECT_THAT(found.out, HasSubstr("meridon: module TEST_elsewhere: SERVER_Mod, MERIDON_Mod\n"));
    EXPECT_THAT(found.out, HasSubstr("TEST_elsewhere ticks: 3 before, 3 game\n"));

    EXPECT_EQ(decoyFirst.exitCode, 2);
    EXPECT_THAT(decoyFirst.err,
                HasSubstr("Module '" + decoys + "/TEST_elsewhere/TEST_elsewhere.SERVER_Mod' failed to load"));
}

TEST(LauncherTest, HelpVersionAndVerboseSayWhatRunsAndWhatWasSavedAndATerminationSignalEndsAServerInOrder) {
    auto help = Launch({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, testing::StartsWith("Usage: meridon [options]\n"));
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
        "meridon: entity type kept of module TEST_entities\n",
        "meridon: entity type crate of module TEST_entities\n",
        "meridon: world '" + world + "': 0 entities loaded\n",
        "meridon: world '" + world + "': 3 entities saved\n",
        "\nrender ",
    };
    for (auto const& line : lines)
        EXPECT_THAT(client.out, HasSubstr(line));
    EXPECT_LT(client.out.find("entity type"), client.out.find("entities loaded")) << "types are listed before the load";

    // A dedicated server takes only the server side of a module; a termination signal ends it in order, with the
    // world saved and the modules unloaded.
    auto server = Launch({"--server", "--server-hz", "200", "--modules", "TEST_alpha,TEST_entities", "--mods",
                          "TEST_entities", "--verbose"},
                         std::chrono::milliseconds(500));
    EXPECT_EQ(server.signal, 0);
    EXPECT_EQ(server.exitCode, 0) << server.err;
    EXPECT_THAT(server.out, HasSubstr("meridon: module TEST_alpha: SERVER_Mod\n"));
    EXPECT_THAT(server.out, HasSubstr("meridon: world '" + world + "': 3 entities loaded\n"));
    EXPECT_THAT(server.out, HasSubstr("meridon: world '" + world + "': 3 entities saved\n"));
    EXPECT_THAT(server.out, HasSubstr("TEST_alpha ticks: ")) << "the modules were unloaded";
}
