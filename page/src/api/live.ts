import { isObject, type JsonObject } from "@/lib/json";

export type EventKind = "detection" | "configuration" | "model" | "stream" | "lost";
const kinds: EventKind[] = ["detection", "configuration", "model", "stream", "lost"];

export interface ServerEvent {
    kind: EventKind;
    id: string;
    data: JsonObject;
    /** When it came, in milliseconds since 1970. */
    at: number;
}

export type Connection = "connecting" | "open" | "lost";
type Handler = (event: ServerEvent) => void;
/** What of EventSource is used; tests bring their own. */
export type Source = Pick<EventSource, "close" | "addEventListener" | "onopen" | "onerror" | "readyState">;

/** How long to wait after an answer that the browser itself does not try again. */
const pause = 3000;

/** Reads one event; nothing where its data is no JSON object. */
export function readEvent(kind: EventKind, message: { lastEventId: string; data: string }): ServerEvent | undefined {
    try {
        const data: unknown = JSON.parse(message.data);
        return isObject(data) ? { kind, id: message.lastEventId, data, at: Date.now() } : undefined;
    } catch {
        return undefined;
    }
}

/** One connection for all events that anything on the page wants, since a browser opens only six to a server. */
export class Live {
    private readonly handlers = new Map<Handler, EventKind[]>();
    private readonly watchers = new Set<(state: Connection) => void>();
    private source: Source | undefined;
    private open: string | undefined;
    private updating = false;
    private timer: ReturnType<typeof setTimeout> | undefined;
    state: Connection = "connecting";

    /** make: opens the events of these kinds. */
    constructor(private readonly make: (kinds: string) => Source) {}

    /** Hears the events of these kinds until the function that it returns is called. */
    subscribe(wanted: EventKind[], handler: Handler): () => void {
        this.handlers.set(handler, wanted);
        this.update();
        return () => {
            this.handlers.delete(handler);
            this.update();
        };
    }

    /** Hears how the connection is doing. */
    watch(watcher: (state: Connection) => void): () => void {
        this.watchers.add(watcher);
        return () => this.watchers.delete(watcher);
    }

    /** Opens the connection anew, say with other rights. */
    restart(): void {
        this.close();
        this.update();
    }

    private update(): void {
        if (this.updating) return;
        this.updating = true;
        // All that is done in one go, say when one view takes the place of another, opens one connection.
        queueMicrotask(() => {
            this.updating = false;
            const wanted = [...new Set([...this.handlers.values()].flat())].filter((kind) => kind !== "lost");
            const query = wanted.sort().join();
            if (query !== (this.open ?? "")) this.connect(query);
        });
    }

    private connect(wanted: string): void {
        this.close();
        if (wanted === "") return;
        this.open = wanted;
        const source = this.make(wanted);
        this.source = source;
        source.onopen = () => this.tell("open");
        source.onerror = () => {
            this.tell("lost");
            // 2: closed for good, after an answer such as 401 or 503.
            if (source.readyState === 2 && this.source === source)
                this.timer = setTimeout(() => this.connect(wanted), pause);
        };
        for (const kind of kinds)
            source.addEventListener(kind, (message) => {
                const event = readEvent(kind, message as MessageEvent<string>);
                if (event) this.hand(event);
            });
    }

    private close(): void {
        clearTimeout(this.timer);
        this.source?.close();
        this.source = undefined;
        this.open = undefined;
    }

    private hand(event: ServerEvent): void {
        for (const [handler, wanted] of [...this.handlers]) if (wanted.includes(event.kind)) handler(event);
    }

    private tell(state: Connection): void {
        this.state = state;
        for (const watcher of [...this.watchers]) watcher(state);
    }
}
