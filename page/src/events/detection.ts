import type { ServerEvent } from "@/api/live";
import type { DetectedObject } from "@/api/types";

/** A line of detections: one frame of one stream. */
export interface Detection {
    stream: string;
    frame: number;
    objects: DetectedObject[];
}

/** Nothing for other events. */
export function readDetection(event: ServerEvent): Detection | undefined {
    const { source, frame, objects } = event.data;
    if (event.kind !== "detection" || !Array.isArray(objects)) return undefined;
    return {
        stream: String(source ?? ""),
        frame: Number(frame),
        objects: objects as DetectedObject[],
    };
}

/** "3 motion, 1 person". */
export function describeObjects(objects: DetectedObject[]): string {
    const counts = new Map<string, number>();
    for (const { detection } of objects) counts.set(detection.label, (counts.get(detection.label) ?? 0) + 1);
    return [...counts].map(([label, count]) => `${count} ${label}`).join(", ");
}
