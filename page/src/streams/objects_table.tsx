import { useRef, useState } from "react";
import type { DetectedObject, StreamStatus } from "@/api/types";
import { useEvents } from "@/common/server";
import { readDetection } from "@/events/detection";
import { fixed } from "@/lib/text";

/** How often the table changes, in milliseconds: faster than that nobody reads. */
const interval = 500;

/** What is in the picture now. */
export function ObjectsTable({ stream }: { stream: StreamStatus }) {
    const [objects, setObjects] = useState<DetectedObject[]>([]);
    const last = useRef(0);
    useEvents(["detection"], (event) => {
        const detection = readDetection(event);
        if (detection?.stream !== stream.id || event.at - last.current < interval) return;
        last.current = event.at;
        setObjects(detection.objects);
    });
    return (
        <div className="card">
            <h2>In the picture now</h2>
            {objects.length === 0 ? (
                <p className="empty">nothing</p>
            ) : (
                <div className="table">
                    <table>
                        <thead>
                            <tr>
                                <th>Label</th>
                                <th className="number">Sure</th>
                                <th className="number">Area</th>
                                {stream.calibrated && <th className="number">Height</th>}
                                {stream.calibrated && <th className="number">Distance</th>}
                            </tr>
                        </thead>
                        <tbody>
                            {objects.map((object, index) => (
                                <tr key={index}>
                                    <td>{object.detection.label}</td>
                                    <td className="number">{fixed(object.detection.confidence, 2)}</td>
                                    <td className="number">{object.area}</td>
                                    {stream.calibrated && <td className="number">{fixed(object["height_m"], 2)} m</td>}
                                    {stream.calibrated && <td className="number">{fixed(object["distance_m"], 1)} m</td>}
                                </tr>
                            ))}
                        </tbody>
                    </table>
                </div>
            )}
        </div>
    );
}
