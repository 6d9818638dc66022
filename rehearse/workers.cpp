#include "rehearse/workers.h"

#include <wx/process.h>
#include <wx/stdpaths.h>
#include <wx/thread.h>
#include <wx/utils.h>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <string>
#include <string_view>

#include "rehearse/flight.h"

namespace quirkmeter::rehearse {

namespace {

// A line that is no tally of flights adds nothing.
Tally ParseTally(std::string_view line) {
    Tally tally;
    const char* at = line.data();
    const char* end = at + line.size();
    for (std::int64_t& count : tally.Counts()) {
        auto [next, error] = std::from_chars(at, end, count);
        if (error != std::errc()) return {};
        at = std::find_if(next, end, [](char c) { return c != ' '; });
    }
    return tally;
}

}  // namespace

class Workers::Worker final : public wxProcess {
   public:
    explicit Worker(const std::vector<wxString>& command) : wxProcess(wxPROCESS_REDIRECT) {
        std::vector<const wchar_t*> argv;
        for (const wxString& argument : command) argv.push_back(argument.wc_str());
        argv.push_back(nullptr);
        process_ = wxExecute(argv.data(), wxEXEC_ASYNC, this);
        ended_ = process_ == 0;
    }

    // The toolkit deletes what is detached when its process has ended.
    static void End(std::unique_ptr<Worker> worker) {
        if (worker->ended_) return;
        Kill(static_cast<int>(worker->process_), wxSIGKILL);
        worker.release()->Detach();
    }

    bool Collect(Tally& tally) {
        wxInputStream* printed = GetInputStream();
        if (!printed) return false;
        while (printed->CanRead()) {
            char buffer[65536];
            unread_.append(buffer, printed->Read(buffer, sizeof buffer).LastRead());
            TakeLines(tally);
        }
        return !printed->Eof();
    }

    // Its owner hears of the end from what it prints.
    void OnTerminate(int, int) override { ended_ = true; }

   private:
    void TakeLines(Tally& tally) {
        std::size_t begin = 0;
        for (std::size_t end; (end = unread_.find('\n', begin)) != unread_.npos; begin = end + 1)
            tally.Add(ParseTally(std::string_view(unread_).substr(begin, end - begin)));
        unread_.erase(0, begin);
    }

    long process_ = 0;
    bool ended_ = true;
    std::string unread_;
};

Workers::Workers(const std::vector<wxString>& arguments) {
    int all = std::max(1, wxThread::GetCPUCount());
    for (int share = 0; share < all; ++share) {
        std::vector<wxString> command = {wxStandardPaths::Get().GetExecutablePath()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        command.insert(command.end(), {"--share", wxString::Format("%d/%d", share, all)});
        workers_.push_back(std::make_unique<Worker>(command));
    }
}

Workers::~Workers() {
    for (auto& worker : workers_) Worker::End(std::move(worker));
}

bool Workers::Collect(Tally& tally) {
    bool more = false;
    for (auto& worker : workers_) more = worker->Collect(tally) || more;
    return more;
}

void FlyShare(const FlightPlan& plan, std::int64_t share, std::int64_t all) {
    RehearsalAircraft aircraft(plan);
    for (std::int64_t batch = share; batch < Batches(plan) && std::cout; batch += all) {
        Tally tally;
        aircraft.FlyBatch(batch, tally);
        for (std::int64_t count : tally.Counts()) std::cout << count << ' ';
        std::cout << std::endl;
    }
}

}  // namespace quirkmeter::rehearse
