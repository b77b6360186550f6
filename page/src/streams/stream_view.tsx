import { get } from "@/api/client";
import type { StreamStatus } from "@/api/types";
import { CalibrationView } from "@/calibration/calibration_view";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { routeTo, useFocusOnArrival } from "@/common/route";
import { useEvents } from "@/common/server";
import { LiveTab } from "./live_tab";
import { SettingsTab } from "./settings_tab";
import { StateBadge } from "./state_badge";

const tabs = [
    ["live", "Live"],
    ["settings", "Settings"],
    ["calibration", "Calibration"],
] as const;

/** One stream: its picture, its settings, its calibration. */
export function StreamView({ id, tab }: { id: string; tab: string }) {
    const status = useLoaded(`stream ${id}`, () => get<{ streams: StreamStatus[] }>("streams"), 2000);
    useEvents(["stream", "configuration"], status.reload);
    const heading = useFocusOnArrival(tab);
    const stream = status.value?.streams.find((other) => other.id === id);

    return (
        <>
            <div className="title">
                <h1 ref={heading} tabIndex={-1}>
                    {id}
                </h1>
                {stream && <StateBadge stream={stream} />}
            </div>
            <nav className="tabs" aria-label={`Views of ${id}`}>
                {tabs.map(([name, title]) => (
                    <a key={name} href={routeTo("streams", id, name)} aria-current={tab === name ? "page" : undefined}>
                        {title}
                    </a>
                ))}
            </nav>
            {status.problem !== undefined && <Notice kind="error">{status.problem}</Notice>}
            {status.value && !stream && <Notice kind="warning">There is no stream of this name.</Notice>}
            {stream && tab === "live" && <LiveTab stream={stream} />}
            {stream && tab === "settings" && <SettingsTab id={id} />}
            {stream && tab === "calibration" && <CalibrationView stream={stream} onSaved={status.reload} />}
        </>
    );
}
