import { useState } from "react";
import { address, remove } from "@/api/client";
import type { StreamStatus } from "@/api/types";
import { Notice } from "@/common/notice";
import { routeTo } from "@/common/route";
import { title } from "@/lib/text";
import { MovingPicture } from "./moving_picture";
import { ObjectsTable } from "./objects_table";

/** The live picture of a stream, its numbers, and what is in the picture now. */
export function LiveTab({ stream }: { stream: StreamStatus }) {
    const [annotated, setAnnotated] = useState(true);
    return (
        <div className="live">
            <div>
                <MovingPicture
                    key={`${stream.id} ${annotated}`}
                    address={address(`streams/${encodeURIComponent(stream.id)}/mjpeg?annotated=${annotated ? 1 : 0}`)}
                    stream={stream}
                />
                <label className="check">
                    <input type="checkbox" checked={annotated} onChange={(event) => setAnnotated(event.target.checked)} />
                    Boxes{stream.calibrated && ", metres and the grid on the ground"}
                </label>
            </div>
            <div className="beside">
                {stream.problem !== "" && <Notice kind="warning">{stream.problem}</Notice>}
                <Numbers stream={stream} />
                <ObjectsTable stream={stream} />
                <RemoveStream id={stream.id} />
            </div>
        </div>
    );
}

function Numbers({ stream }: { stream: StreamStatus }) {
    const losses = Object.entries(stream.losses).filter(([, count]) => count > 0);
    const rows: [string, string][] = [
        ["Frames per second", stream.frames_per_second.toFixed(1)],
        ["Frames", stream.frames.toLocaleString("en")],
        ["Objects", stream.objects.toLocaleString("en")],
        ["Size", stream.width > 0 ? `${stream.width} \u00d7 ${stream.height}` : "\u2013"],
        ["Restarts", String(stream.restarts)],
        ...losses.map(([name, count]): [string, string] => [title(name), String(count)]),
    ];
    return (
        <dl className="card facts">
            {rows.map(([name, value]) => (
                <div key={name}>
                    <dt>{name}</dt>
                    <dd>{value}</dd>
                </div>
            ))}
        </dl>
    );
}

/** Asks once more before the stream goes. */
function RemoveStream({ id }: { id: string }) {
    const [asking, setAsking] = useState(false);
    const [problem, setProblem] = useState("");

    async function confirm() {
        try {
            await remove(`streams/${encodeURIComponent(id)}`);
            window.location.hash = routeTo("streams");
        } catch (error) {
            setProblem((error as Error).message);
        }
    }

    if (!asking) {
        return (
            <button className="danger" onClick={() => setAsking(true)}>
                Remove this stream
            </button>
        );
    }
    return (
        <div className="card ask" role="group" aria-label={`Remove ${id}`}>
            <p>Remove {id} with all its settings?</p>
            <div className="buttons">
                <button className="danger" onClick={() => void confirm()} autoFocus>
                    Remove
                </button>
                <button onClick={() => setAsking(false)}>Keep</button>
            </div>
            {problem !== "" && (
                <p className="error" role="alert">
                    {problem}
                </p>
            )}
        </div>
    );
}
