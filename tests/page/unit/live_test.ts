import { afterEach, beforeEach, describe, expect, it, vi } from "vitest";
import { Live, readEvent, type ServerEvent, type Source } from "@/api/live";

/** A source of events in the test's hands. */
class FakeSource implements Source {
    readyState = 0;
    closed = false;
    onopen: Source["onopen"] = null;
    onerror: Source["onerror"] = null;
    private readonly listeners = new Map<string, (message: MessageEvent) => void>();
    constructor(readonly kinds: string) {}

    addEventListener(kind: string, listener: unknown): void {
        this.listeners.set(kind, listener as (message: MessageEvent) => void);
    }
    close(): void {
        this.closed = true;
    }
    send(kind: string, data: string, id = "1"): void {
        this.listeners.get(kind)?.(new MessageEvent(kind, { data, lastEventId: id }));
    }
    fail(readyState: number): void {
        this.readyState = readyState;
        this.onerror?.call(this as never, new Event("error"));
    }
}

const sources: FakeSource[] = [];
function live(): Live {
    return new Live((kinds) => {
        sources.push(new FakeSource(kinds));
        return sources.at(-1)!;
    });
}
const settled = () => Promise.resolve();

beforeEach(() => void vi.useFakeTimers({ now: 1000 }));
afterEach(() => {
    sources.length = 0;
    vi.useRealTimers();
});

describe("live events", () => {
    it("come over one connection for all who want some", async () => {
        const hub = live();
        const models: ServerEvent[] = [];
        const streams: ServerEvent[] = [];
        hub.subscribe(["model", "lost"], (event) => models.push(event));
        hub.subscribe(["stream"], (event) => streams.push(event));
        await settled();
        expect(sources.map((source) => source.kinds)).toEqual(["model,stream"]);
        sources[0]!.send("model", '{"path":"motion.model_status","value":"loaded"}', "7");
        sources[0]!.send("stream", '{"id":"gate"}');
        sources[0]!.send("lost", '{"count":3}');
        expect(models).toEqual([
            { kind: "model", id: "7", data: { path: "motion.model_status", value: "loaded" }, at: 1000 },
            { kind: "lost", id: "1", data: { count: 3 }, at: 1000 },
        ]);
        expect(streams).toHaveLength(1);
    });

    it("open a new connection when other kinds are wanted, and none for nobody", async () => {
        const hub = live();
        const leave = hub.subscribe(["stream"], () => undefined);
        await settled();
        const leaveToo = hub.subscribe(["detection"], () => undefined);
        await settled();
        expect(sources.map((source) => [source.kinds, source.closed])).toEqual([
            ["stream", true],
            ["detection,stream", false],
        ]);
        leave();
        leaveToo();
        await settled();
        expect(sources.at(-1)!.closed).toBe(true);
        expect(sources).toHaveLength(2);
    });

    it("keep their connection while a view gives way to one that wants the same", async () => {
        const hub = live();
        const leave = hub.subscribe(["stream"], () => undefined);
        await settled();
        leave();
        hub.subscribe(["stream"], () => undefined);
        await settled();
        expect(sources).toHaveLength(1);
        expect(sources[0]!.closed).toBe(false);
    });

    it("are asked for again after an answer that a browser does not try again", async () => {
        const hub = live();
        const states: string[] = [];
        hub.watch((state) => states.push(state));
        hub.subscribe(["stream"], () => undefined);
        await settled();
        sources[0]!.onopen?.call(sources[0] as never, new Event("open"));
        sources[0]!.fail(0);
        vi.advanceTimersByTime(10000);
        expect(sources).toHaveLength(1);
        sources[0]!.fail(2);
        vi.advanceTimersByTime(10000);
        expect(sources).toHaveLength(2);
        expect(states).toEqual(["open", "lost", "lost"]);
    });

    it("are left out when they hold no object", () => {
        for (const data of ["", "{", "[]", "3", "null"]) expect(readEvent("model", { lastEventId: "1", data })).toBeUndefined();
    });
});
