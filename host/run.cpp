#include "run.hpp"

#include <algorithm>
#include <type_traits>
#include <vector>

#include "text.hpp"

namespace qel::host {
namespace {

using Clock = std::chrono::steady_clock;

class Loop {
public:
    explicit Loop(RunPlan& plan) : plan_(plan), sinkFailed_(plan.sinks.size(), false) {
        report_.stages = {{"decode"}, {"algorithm"}};
        for (auto const& sink : plan.sinks) report_.stages.push_back({sink->GetStage()});
    }

    RunReport Run() {
        auto const start = Clock::now();
        Guard([this] {
            while (!plan_.maxFrames || report_.frames < *plan_.maxFrames) {
                if (!Step()) break;
            }
        });
        for (std::size_t i = 0; i < plan_.sinks.size(); ++i) {
            if (!sinkFailed_[i]) Guard([this, i] { Timed(SinkStage(i), [&] { plan_.sinks[i]->Finish(); }); });
        }
        report_.losses = plan_.source.GetLosses();
        report_.elapsed = Clock::now() - start;
        return std::move(report_);
    }

private:
    /// Adds the time that an action takes to a stage, also when it throws.
    template <class Action>
    std::invoke_result_t<Action> Timed(StageTime& stage, Action&& action) {
        struct Stop {
            Loop& loop;
            StageTime& stage;
            Clock::time_point start = Clock::now();
            ~Stop() {
                auto const time = Clock::now() - start;
                stage.time += time;
                if (loop.plan_.timed) loop.plan_.timed(stage.stage, time);
            }
        } const stop{*this, stage};
        return action();
    }

    StageTime& SinkStage(std::size_t index) { return report_.stages[2 + index]; }

    /// Runs an action and keeps its exception, unless there is an earlier one.
    template <class Action>
    void Guard(Action&& action) {
        try {
            action();
        } catch (...) {
            if (!report_.error) report_.error = std::current_exception();
        }
    }

    bool Step() {
        auto const frame = Timed(report_.stages[0], [this] { return plan_.source.Read(); });
        if (!frame || (plan_.pace && !plan_.pace(*frame))) return false;
        auto const gap = plan_.source.GetGap();
        bool const continues = report_.frames == 0 || (!gap && frame->GetSize() == size_);
        size_ = frame->GetSize();
        algorithm::video::Result result;
        FrameSource::Frame const shown = Timed(report_.stages[1], [&] {
            if (!continues && plan_.startAnew) plan_.startAnew();
            return plan_.analyse(*frame, result);
        });
        for (std::size_t i = 0; i < plan_.sinks.size(); ++i) {
            // Set while the sink is at work, so that it stays set when the sink throws.
            sinkFailed_[i] = true;
            Timed(SinkStage(i), [&] { plan_.sinks[i]->Take({plan_.firstIndex + report_.frames, shown, result, gap}); });
            sinkFailed_[i] = false;
        }
        ++report_.frames;
        report_.objects += result.objects.size();
        if (plan_.progress) plan_.progress(report_.frames);
        return true;
    }

    RunPlan& plan_;
    std::vector<bool> sinkFailed_;
    geometry::Dimension<unsigned int, 2> size_;
    RunReport report_;
};

double Seconds(std::chrono::nanoseconds time) { return std::chrono::duration<double>(time).count(); }

std::string Rate(std::uint64_t frames, std::chrono::nanoseconds time) {
    return time.count() > 0 ? FormatNumber(static_cast<double>(frames) / Seconds(time), 1) : std::string("-");
}

std::string Count(std::uint64_t count, std::string const& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string SummariseLosses(Losses const& losses) {
    std::vector<std::string> parts;
    if (losses.interruptions != 0 || losses.attempts != 0) {
        parts.push_back(Count(losses.interruptions, "interruption") + " (" + Count(losses.stalls, "stall") + ")");
        parts.push_back("back " + Count(losses.returns, "time") + " after " + Count(losses.attempts, "attempt"));
        parts.push_back(FormatNumber(Seconds(losses.away), 2) + " s away");
    }
    if (losses.droppedFrames != 0) parts.push_back(Count(losses.droppedFrames, "frame") + " dropped");
    return parts.empty() ? std::string() : "  lost: " + Join(parts) + "\n";
}

}  // namespace

RunReport Run(RunPlan& plan) { return Loop(plan).Run(); }

std::string Summarise(RunReport const& report, std::string const& source) {
    std::string text = source + ": " + Count(report.frames, "frame") + ", " + Count(report.objects, "object") + ", " +
                       FormatNumber(Seconds(report.elapsed), 2) + " s, " + Rate(report.frames, report.elapsed) +
                       " frames/s\n";
    std::string stages;
    for (StageTime const& stage : report.stages) {
        stages += (stages.empty() ? "  " : ", ") + stage.stage + " " + FormatNumber(Seconds(stage.time), 3) + " s";
        if (stage.stage == "algorithm") stages += " (" + Rate(report.frames, stage.time) + " frames/s)";
    }
    return text + stages + "\n" + SummariseLosses(report.losses);
}

}  // namespace qel::host
