import type { StreamStatus } from "@/api/types";
import { routeTo } from "@/common/route";
import { PolledPicture } from "./polled_picture";
import { StateBadge } from "./state_badge";

/** One stream among others: picture, state, numbers, and the way to it. */
export function StreamCard({ stream }: { stream: StreamStatus }) {
    return (
        <article className="card stream-card">
            <a href={routeTo("streams", stream.id)} className="stream-link">
                <PolledPicture stream={stream} width={480} />
                <span className="stream-name">
                    <strong>{stream.id}</strong>
                    <StateBadge stream={stream} />
                </span>
            </a>
            <p className="numbers">
                <span>{stream.frames_per_second.toFixed(1)} fps</span>
                <span>{stream.frames.toLocaleString("en")} frames</span>
                <span>{stream.objects.toLocaleString("en")} objects</span>
                {stream.calibrated && <span>in metres</span>}
            </p>
            {stream.problem !== "" && <p className="problem">{stream.problem}</p>}
        </article>
    );
}
