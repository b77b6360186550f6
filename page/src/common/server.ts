import { useEffect, useRef, useSyncExternalStore } from "react";
import { address } from "@/api/client";
import { Live, type Connection, type EventKind, type ServerEvent } from "@/api/live";

/** The events of the server that this page came from. */
export const live = new Live((kinds) => new EventSource(address(`events?kinds=${kinds}`), { withCredentials: true }));

/** Calls the handler for each event of these kinds while the component is shown. */
export function useEvents(kinds: EventKind[], handler: (event: ServerEvent) => void): void {
    const latest = useRef(handler);
    useEffect(() => void (latest.current = handler));
    const wanted = kinds.join();
    useEffect(
        () => live.subscribe(wanted.split(",") as EventKind[], (event) => latest.current(event)),
        [wanted],
    );
}

export function useConnection(): Connection {
    return useSyncExternalStore(
        (changed) => live.watch(changed),
        () => live.state,
    );
}
