#include "LauncherConfig.h"

#include "engine/String.h"

#include <sstream>

using quorl::filesystem::ConfigFile;

std::vector<std::string> SplitNames(std::string const& text) {
    std::vector<std::string> names;
    std::stringstream stream(text);
    std::string name;
    while (std::getline(stream, name, ',')) {
        quorl::String::Trim(name, " \t");
        if (!name.empty())
            names.push_back(name);
    }
    return names;
}

void LauncherConfig::ReadFile(std::string const& path) {
    ConfigFile file(path);
    std::string moduleList, modList;
    float render = static_cast<float>(renderHz), game = static_cast<float>(gameHz);
    float input = static_cast<float>(inputHz), serverRate = static_cast<float>(serverHz);
    float autosave = static_cast<float>(autosaveMinutes);
    file.ReadFromINI("launcher",
                     {
                         ConfigFile::Conf(&file, "modules", &moduleList, ConfigFile::CONF_STRING),
                         ConfigFile::Conf(&file, "mods", &modList, ConfigFile::CONF_STRING),
                         ConfigFile::Conf(&file, "world", &world, ConfigFile::CONF_STRING),
                         ConfigFile::Conf(&file, "render_hz", &render, ConfigFile::CONF_FLOAT),
                         ConfigFile::Conf(&file, "game_hz", &game, ConfigFile::CONF_FLOAT),
                         ConfigFile::Conf(&file, "input_hz", &input, ConfigFile::CONF_FLOAT),
                         ConfigFile::Conf(&file, "server_hz", &serverRate, ConfigFile::CONF_FLOAT),
                         ConfigFile::Conf(&file, "server_substeps", &serverSubsteps, ConfigFile::CONF_INT),
                         ConfigFile::Conf(&file, "autosave_minutes", &autosave, ConfigFile::CONF_FLOAT),
                     },
                     true);
    modules = SplitNames(moduleList);
    mods = SplitNames(modList);
    renderHz = render;
    gameHz = game;
    inputHz = input;
    serverHz = serverRate;
    autosaveMinutes = autosave;
}
