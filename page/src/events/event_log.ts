import type { ServerEvent } from "@/api/live";
import { isObject, type Json } from "@/lib/json";
import { describeObjects, readDetection } from "./detection";

/** A row of the table of events. */
export interface Row {
    key: string;
    at: number;
    kind: string;
    stream: string;
    text: string;
}

/** The table holds so many of the newest rows. */
export const maximumRows = 300;

function text(value: Json | undefined): string {
    return typeof value === "string" ? value : value === undefined ? "" : JSON.stringify(value);
}

function describe(event: ServerEvent): string {
    const { data } = event;
    switch (event.kind) {
        case "lost":
            return `${text(data["count"])} events were lost: this page is too slow for them`;
        case "configuration":
            return Array.isArray(data["changed"]) ? data["changed"].map(text).join(", ") : text(data);
        case "model":
            return "path" in data ? `${text(data["path"])}: ${text(data["value"])}` : text(data);
        default:
            return [text(data["state"]), text(data["problem"])].filter((part) => part !== "").join(": ");
    }
}

/** The row of an event; nothing for frames in which nothing was found. */
export function toRow(event: ServerEvent): Row | undefined {
    const base = { key: `${event.kind} ${event.id} ${event.at}`, at: event.at, kind: event.kind };
    const detection = readDetection(event);
    if (detection) {
        if (detection.objects.length === 0) return undefined;
        const found = describeObjects(detection.objects);
        return { ...base, stream: detection.stream, text: `frame ${detection.frame}: ${found}` };
    }
    const stream = text(event.data["stream"] ?? event.data["id"]);
    return { ...base, stream: isObject(event.data["stream"]) ? "" : stream, text: describe(event) };
}

/** The newest rows first. */
export function addRows(rows: Row[], news: Row[]): Row[] {
    return news.length === 0 ? rows : [...news.reverse(), ...rows].slice(0, maximumRows);
}
