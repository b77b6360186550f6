import { useEffect, useRef, useSyncExternalStore } from "react";

/** Where the page is: the parts of the address behind the '#', "#/streams/gate/settings". */
export type Route = string[];

function read(): string {
    return window.location.hash;
}

export function parseRoute(hash: string): Route {
    const parts = hash.replace(/^#?\/?/, "").split("/").filter((part) => part !== "");
    return parts.map((part) => {
        try {
            return decodeURIComponent(part);
        } catch {
            return part;
        }
    });
}

export function routeTo(...parts: string[]): string {
    return `#/${parts.map(encodeURIComponent).join("/")}`;
}

export function useRoute(): Route {
    const hash = useSyncExternalStore((changed) => {
        window.addEventListener("hashchange", changed);
        return () => window.removeEventListener("hashchange", changed);
    }, read);
    return parseRoute(hash);
}

/** Moves the focus to the heading of a view that was navigated to, so that a keyboard and a reader go on from there. */
export function useFocusOnArrival(view: string): React.RefObject<HTMLHeadingElement> {
    const heading = useRef<HTMLHeadingElement>(null);
    const first = useRef(true);
    useEffect(() => {
        if (first.current) first.current = false;
        else heading.current?.focus();
    }, [view]);
    return heading;
}
