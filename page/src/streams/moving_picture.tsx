import { useEffect, useRef, useState } from "react";
import type { StreamStatus } from "@/api/types";

/** Milliseconds until a stream of pictures that broke off is asked for again. */
const pause = 2000;

/** A stream of pictures, one JPEG after the other. */
export function MovingPicture({ address, stream }: { address: string; stream: StreamStatus }) {
    const image = useRef<HTMLImageElement>(null);
    const [turn, setTurn] = useState(0);
    const [broken, setBroken] = useState(false);
    const hasFrames = stream.width > 0;

    // A browser goes on receiving for an image that has left the page unless it is told to stop.
    useEffect(() => {
        const element = image.current;
        return () => element?.removeAttribute("src");
    }, [turn, hasFrames]);
    useEffect(() => {
        if (!broken) return undefined;
        const timer = window.setTimeout(() => {
            setBroken(false);
            setTurn((before) => before + 1);
        }, pause);
        return () => window.clearTimeout(timer);
    }, [broken]);

    return (
        <div className="picture large" style={{ aspectRatio: hasFrames ? stream.width / stream.height : 4 / 3 }}>
            {hasFrames && !broken ? (
                <img
                    key={turn}
                    ref={image}
                    src={address}
                    alt={`Live picture of ${stream.id}`}
                    onError={() => setBroken(true)}
                />
            ) : (
                <span className="no-picture">no picture</span>
            )}
        </div>
    );
}
