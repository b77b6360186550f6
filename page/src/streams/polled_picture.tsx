import { useEffect, useRef, useState } from "react";
import type { StreamStatus } from "@/api/types";
import { usePicture } from "@/common/picture";

/** Milliseconds from one picture to the next. */
const pause = 400;

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
    const visible = useVisible(box);
    const path = `streams/${encodeURIComponent(stream.id)}/frame.jpg?width=${width}`;
    const running = stream.state === "running";
    const picture = usePicture(visible && stream.width > 0 ? path : undefined, 0, running ? pause : undefined);
    return (
        <div className="picture" ref={box}>
            {picture.address !== undefined ? (
                <img src={picture.address} alt={`Live picture of ${stream.id}`} />
            ) : (
                <span className="no-picture">{running ? "" : "no picture"}</span>
            )}
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
