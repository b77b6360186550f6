import { useEffect, useRef, useState } from "react";
import { address } from "@/api/client";
import type { StreamStatus } from "@/api/types";

/** Milliseconds from one picture to the next, and after one that could not be had. */
const pause = 400;
const longPause = 3000;

interface Props {
    stream: StreamStatus;
    /** Pixels that are asked for. */
    width: number;
}

/**
 * A picture that is fetched again and again while it is on the screen. Many of these share the few connections that a
 * browser opens to a server, which a stream of pictures each would not.
 */
export function PolledPicture({ stream, width }: Props) {
    const box = useRef<HTMLDivElement>(null);
    const [turn, setTurn] = useState(0);
    const [shown, setShown] = useState(false);
    const visible = useVisible(box);
    const timer = useRef<number>();
    const hasFrames = stream.width > 0;

    useEffect(() => () => window.clearTimeout(timer.current), []);
    const next = (delay: number) => {
        window.clearTimeout(timer.current);
        timer.current = window.setTimeout(() => setTurn((before) => before + 1), delay);
    };

    return (
        <div className="picture" ref={box}>
            {hasFrames && (visible || shown) && (
                <img
                    src={address(`streams/${encodeURIComponent(stream.id)}/frame.jpg?width=${width}&turn=${turn}`)}
                    alt={`Live picture of ${stream.id}`}
                    className={shown ? "" : "not-yet"}
                    onLoad={() => {
                        setShown(true);
                        if (visible && stream.state === "running") next(pause);
                        else next(longPause);
                    }}
                    onError={() => next(longPause)}
                />
            )}
            {!shown && <span className="no-picture">{stream.state === "running" ? "" : "no picture"}</span>}
        </div>
    );
}

function useVisible(element: React.RefObject<Element>): boolean {
    const [visible, setVisible] = useState(false);
    useEffect(() => {
        if (element.current === null) return undefined;
        const observer = new IntersectionObserver((entries) => setVisible(entries.at(-1)?.isIntersecting ?? false));
        observer.observe(element.current);
        return () => observer.disconnect();
    }, [element]);
    return visible;
}
