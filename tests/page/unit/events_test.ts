import { describe, expect, it } from "vitest";
import type { EventKind, ServerEvent } from "@/api/live";
import { describeObjects, readDetection } from "@/events/detection";
import { addRows, maximumRows, toRow } from "@/events/event_log";
import { Series } from "@/events/series";
import type { JsonObject } from "@/lib/json";

function event(kind: EventKind, data: JsonObject): ServerEvent {
    return { kind, id: "5", data, at: 1000 };
}
const person = { detection: { label: "person", confidence: 0.9, bounding_box: {} }, area: 10 };
const car = { detection: { label: "car", confidence: 0.8, bounding_box: {} }, area: 20 };

describe("an event", () => {
    it("of a detection tells what was found", () => {
        const detection = event("detection", { source: "gate", frame: 7, objects: [person, car, person] });
        expect(readDetection(detection)).toMatchObject({ stream: "gate", frame: 7 });
        expect(describeObjects([person, car, person])).toBe("2 person, 1 car");
        expect(toRow(detection)).toMatchObject({ kind: "detection", stream: "gate", text: "frame 7: 2 person, 1 car" });
    });

    it("of a frame without objects is no row", () => {
        expect(toRow(event("detection", { source: "gate", frame: 7, objects: [] }))).toBeUndefined();
    });

    const rows: [EventKind, JsonObject, string, string][] = [
        ["stream", { id: "yard", state: "waiting", problem: "no route" }, "yard", "waiting: no route"],
        ["stream", { id: "yard", state: "running", problem: "" }, "yard", "running"],
        ["model", { path: "classifier.model_status", value: "unloaded" }, "", "classifier.model_status: unloaded"],
        ["model", { path: "motion", value: { version: "1" } }, "", 'motion: {"version":"1"}'],
        ["configuration", { changed: ["a.b", "c"] }, "", "a.b, c"],
        ["lost", { count: 12 }, "", "12 events were lost: this page is too slow for them"],
    ];
    for (const [kind, data, stream, text] of rows)
        it(`of kind ${kind} is the row "${text}"`, () => expect(toRow(event(kind, data))).toMatchObject({ stream, text }));

    it("stands before older ones, of which the oldest go", () => {
        const row = (key: number) => ({ key: String(key), at: key, kind: "model", stream: "", text: "" });
        const many = Array.from({ length: maximumRows }, (_, index) => row(index)).reverse();
        const next = addRows(many, [row(1000), row(1001)]);
        expect(next).toHaveLength(maximumRows);
        expect(next.slice(0, 3).map(({ at }) => at)).toEqual([1001, 1000, maximumRows - 1]);
        expect(addRows(many, [])).toBe(many);
    });
});

describe("a series", () => {
    it("holds the mean of each interval, and nothing where there was none", () => {
        const series = new Series(1000, 4000);
        series.add("gate", 10_100, 2);
        series.add("gate", 10_900, 4);
        series.add("gate", 12_000, 1);
        series.add("door", 11_000, 5);
        expect(series.streams()).toEqual(["door", "gate"]);
        expect(series.columns(12_500)).toEqual([
            [9, 10, 11, 12],
            [null, null, 5, null],
            [null, 3, null, 1],
        ]);
    });

    it("forgets what is older than its span", () => {
        const series = new Series(1000, 4000);
        for (let at = 0; at < 100_000; at += 500) series.add("gate", at, at);
        const [times, means] = series.columns(99_500);
        expect(times).toEqual([96, 97, 98, 99]);
        expect(means).toEqual([96_250, 97_250, 98_250, 99_250]);
    });
});
