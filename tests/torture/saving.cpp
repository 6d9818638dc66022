// Kills a process while it saves. The profile must be complete, either the old or the new one, as
// root also on a full disk.
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cmath>
#include <iostream>
#include <random>

#include "child_process.h"
#include "model/catalogue.h"
#include "model/main_window.h"
#include "model/settings.h"
#include "persist/profile.h"

using namespace quirkmeter;
namespace fs = std::filesystem;

namespace {

std::string Folder;

struct NoWindow final : MainWindow {
    void RefreshSubsystems() override {}
    void SetStatusCaption(const std::string&) override {}
    void SetSubSystemsHeading(const std::string&) override {}
    void ShowSubsystemList(bool) override {}
    platform::WindowHandle Handle() const override { return 0; }
    void Unload() override {}
    void ShowMessage(const std::string&, MessageIcon) override {}
};

// Saves a profile that has that time in its first and last line.
void Save(int time) {
    Catalogue[1][1].Reliability = NumberText(static_cast<float>(time) / 100000);
    Catalogue[7][4].Reliability = Catalogue[1][1].Reliability.Text();
    WriteProfile();
}

// Returns the time in the saved profile; 0 for an incomplete one.
int Saved() {
    Catalogue[1][1].Reliability = "";
    Catalogue[7][4].Reliability = "unread";
    bool whole = !ApplyProfile(Settings.LastProfile) &&
                 Catalogue[1][1].Reliability == Catalogue[7][4].Reliability.Text();
    auto time = static_cast<int>(std::lround(Catalogue[1][1].Reliability.ValueOr(0) * 100000));
    return whole ? time : 0;
}

// Kills a process that saves in a loop. Returns the time of the profile that it leaves.
int SaveAndKill(int time, unsigned long microseconds) {
    Process saver([time]() mutable {
        while (geteuid() != 0 || setuid(65534) == 0) Save(++time);
    });
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    saver.Kill();
    for (const auto& file : fs::directory_iterator(Folder))
        if (file.path().extension() == ".tmp") fs::remove(file);  // the save under way
    return Saved();
}

// Kills a thousand times in a folder of that kind. Returns the number of lost profiles.
int SaveIn(const std::string& kind, const std::function<unsigned long(unsigned long)>& below,
           unsigned long seconds) {
    Settings.LastProfile = Folder + "/a.qmp";
    Save(1);
    // The owner must be the saver: another user's file is written in place, which can lose it.
    if (geteuid() == 0 && chown(Settings.LastProfile.c_str(), 65534, getegid()) != 0) return 1;
    int lost = 0, time = 1;
    for (int kill = 1; kill <= 1000; ++kill) {
        if (kind == "full disk")
            std::ofstream(Folder + "/ballast") << std::string(below(2) * 65536, 'b');
        int saved = SaveAndKill(time, below(667 * seconds));
        lost += saved < time;
        time = std::max(time, saved);
        if (isatty(STDERR_FILENO)) std::cerr << "\rsaving: " << kill << " of 1000";
    }
    return lost + (time == 1);  // nothing was saved
}

}  // namespace

int main(int, char** arguments) {
    std::mt19937 random(static_cast<unsigned>(std::stoul(arguments[1])));
    auto below = [&random](unsigned long end) { return random() % end; };
    umask(0);
    static NoWindow window;
    TheMainWindow = &window;
    BuildCatalogue();
    bool root = geteuid() == 0;
    if (!root) std::cerr << "saving: the full disk is left out, for it takes root\n";
    // The disk is visible only in this process's mount namespace and is removed with it.
    if (root && (unshare(CLONE_NEWNS) != 0 ||
                 mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0))
        return perror("saving"), 2;
    for (std::string kind : {"folder", "full disk"}) {
        if (kind == "full disk" && !root) continue;
        Folder = root ? "/tmp" : MakeFolder().string();
        if (root && mount("none", "/tmp", "tmpfs", 0, "size=64k") != 0) return perror("saving"), 2;
        int lost = SaveIn(kind, below, std::stoul(arguments[2]));
        std::cout << "saving: killed, " << kind << "|1000|" << lost << std::endl;
        if (root)
            umount("/tmp");
        else
            fs::remove_all(Folder);
        if (lost != 0) return 1;
    }
}
