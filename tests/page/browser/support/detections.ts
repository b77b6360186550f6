import type { Server } from "./server";

export interface Line {
    frame: number;
    source: string;
    objects: { area: number; height_m?: number }[];
}

/** The next lines of detections that the server sends. */
export async function nextDetections(server: Server, count: number): Promise<Line[]> {
    const answer = await fetch(`${server.address}/api/events?kinds=detection`);
    if (!answer.body) throw new Error("no events");
    const lines: Line[] = [];
    let text = "";
    const decoder = new TextDecoder();
    const reader = answer.body.getReader();
    while (lines.length < count) {
        const { value, done } = await reader.read();
        if (done) throw new Error("the events have ended");
        text += decoder.decode(value, { stream: true });
        const events = text.split("\n\n");
        text = events.pop() ?? "";
        for (const event of events) {
            const data = /^data: (.*)$/m.exec(event)?.[1];
            if (data !== undefined) lines.push(JSON.parse(data) as Line);
        }
    }
    await reader.cancel();
    return lines.slice(0, count);
}

export function areas(lines: Line[]): number[] {
    return lines.flatMap((line) => line.objects.map((object) => object.area));
}
