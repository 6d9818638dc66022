// Killed while saving: settings and profile are whole, old or new, whenever the process that saves
// them is killed, also on a full disk and in a folder that takes no new file.
#include <sys/mount.h>
#include <sys/stat.h>

#include <iostream>
#include <random>

#include "model/catalogue.h"
#include "model/settings.h"
#include "persist/profile.h"
#include "persist/settings_file.h"
#include "process.h"
#include "rehearse/no_window.h"

using namespace quirkmeter;
namespace fs = std::filesystem;

namespace {

std::string Folder;

void Save(int time) {
    Settings.LastProfile = Folder + "/a.qmp";
    Settings.StatusHotkey.Key = time;
    Settings.DisplayUpdate = time % 2 != 0;
    Catalogue[1][1].Hours = Catalogue[7][4].Hours = std::to_string(37 * time % 900);
    WriteProfile();
    WriteSettings();
}

// Kills a process that goes on saving; whether both files are whole then, and no older than before.
bool Survives(int time, unsigned long microseconds) {
    Process saver([time]() mutable {
        while (setuid(65534) == 0) Save(++time);
    });
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    saver.Kill();
    while (wait(nullptr) > 0) continue;  // for a child of its own that still writes
    for (const auto& file : fs::directory_iterator(Folder))
        if (file.path().extension() == ".tmp") fs::remove(file);  // what it had not finished
    BuildCatalogue();
    Settings = {};
    return ReadSettings() && !ApplyProfile(Folder + "/a.qmp") &&
           Settings.StatusHotkey.Key >= time &&
           Settings.DisplayUpdate == (Settings.StatusHotkey.Key % 2 != 0) &&
           Catalogue[1][1].Hours == Catalogue[7][4].Hours.Text();
}

}  // namespace

// The program's own path, beside which it has its settings.
extern "C" ssize_t readlink(const char*, char* path, size_t size) {
    return static_cast<ssize_t>((Folder + "/program").copy(path, size));
}

int main(int, char** arguments) {
    std::mt19937 random(static_cast<unsigned>(std::stoul(arguments[1])));
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    umask(0);
    static rehearse::NoWindow window;
    TheMainWindow = &window;
    for (std::string where : {"folder", "full disk", "read-only folder"}) {
        Folder = MakeFolder();
        if (mount("none", Folder.c_str(), "tmpfs", 0, "size=64k") != 0) return perror("mount"), 2;
        Save(1);
        fs::permissions(Folder, fs::perms(where == "read-only folder" ? 0555 : 0777));
        int lost = 0;
        for (int kill = 1; kill <= 1000; ++kill) {
            if (where == "full disk")
                std::ofstream(Folder + "/ballast") << std::string(random() % 2 * 65536, 'b');
            lost +=
                !Survives(Settings.StatusHotkey.Key, random() % (667 * std::stoul(arguments[2])));
            if (isatty(STDERR_FILENO)) std::cerr << "\rsaving: " << kill << " of 1000";
        }
        if (Settings.StatusHotkey.Key == 1) ++lost;  // nothing was saved
        std::cout << "saving: killed, " << where << "|1000|" << lost << std::endl;
        umount(Folder.c_str());
        fs::remove_all(Folder);
        if (lost != 0) return 1;
    }
}
