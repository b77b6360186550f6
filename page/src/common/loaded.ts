import { useCallback, useEffect, useRef, useState } from "react";

export interface Loaded<T> {
    value: T | undefined;
    /** Why it could not be loaded last. */
    problem: string | undefined;
    reload: () => void;
}

/** What load gives; loaded again when key changes, when told to, and every so many milliseconds where asked for. */
export function useLoaded<T>(key: string, load: () => Promise<T>, every?: number): Loaded<T> {
    const [state, setState] = useState<{ key: string; value?: T; problem?: string }>({ key });
    const latest = useRef(load);
    useEffect(() => void (latest.current = load));
    const turn = useRef(0);
    const reload = useCallback(() => {
        const mine = ++turn.current;
        latest.current().then(
            (value) => turn.current === mine && setState({ key, value }),
            (error: Error) =>
                turn.current === mine &&
                setState((before) => ({ ...(before.key === key ? before : { key }), problem: error.message })),
        );
    }, [key]);
    useEffect(() => {
        reload();
        return () => void ++turn.current;
    }, [reload]);
    useEffect(() => {
        if (every === undefined) return undefined;
        const timer = setInterval(() => document.hidden || reload(), every);
        return () => clearInterval(timer);
    }, [every, reload]);
    const current = state.key === key ? state : { key };
    return { value: current.value, problem: current.problem, reload };
}
