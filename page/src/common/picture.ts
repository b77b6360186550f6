import { useEffect, useRef, useState } from "react";
import { fetchBlob } from "@/api/client";

/**
 * The address of a picture of the server, as it was when it was fetched; nothing before the first. A browser would show
 * what it remembers of an address that it has seen before, and the server takes no names that it does not know.
 */
export interface Picture {
    address: string | undefined;
    problem: string | undefined;
}

/** How long a picture that was replaced is kept, in milliseconds: it may be on the screen still. */
const afterlife = 1000;

function replace(before: Picture, blob: Blob): Picture {
    const old = before.address;
    if (old !== undefined) setTimeout(() => URL.revokeObjectURL(old), afterlife);
    return { address: URL.createObjectURL(blob), problem: undefined };
}

/**
 * The picture at a path of the API. turn: fetched anew when it changes. pause: milliseconds from one picture to the next;
 * undefined for a single one; longPause follows a failure.
 */
export function usePicture(path: string | undefined, turn: number, pause?: number, longPause = 3000): Picture {
    const [picture, setPicture] = useState<Picture>({ address: undefined, problem: undefined });
    useEffect(() => {
        if (path === undefined) return undefined;
        const stop = new AbortController();
        let timer: ReturnType<typeof setTimeout>;
        const next = async () => {
            try {
                const blob = await fetchBlob(path, stop.signal);
                setPicture((before) => replace(before, blob));
                if (pause !== undefined) timer = setTimeout(() => void next(), pause);
            } catch (error) {
                if (stop.signal.aborted) return;
                setPicture((before) => ({ ...before, problem: (error as Error).message }));
                timer = setTimeout(() => void next(), longPause);
            }
        };
        void next();
        return () => {
            stop.abort();
            clearTimeout(timer);
        };
    }, [path, turn, pause, longPause]);
    const shown = useRef<string>();
    useEffect(() => void (shown.current = picture.address), [picture]);
    useEffect(() => () => URL.revokeObjectURL(shown.current ?? ""), []);
    return picture;
}
