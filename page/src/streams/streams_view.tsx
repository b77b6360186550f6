import { useState } from "react";
import { get } from "@/api/client";
import type { StreamStatus } from "@/api/types";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { useEvents } from "@/common/server";
import { AddStream } from "./add_stream";
import { StreamCard } from "./stream_card";

/** All streams with small live pictures. */
export function StreamsView() {
    const streams = useLoaded("streams", () => get<{ streams: StreamStatus[] }>("streams"), 2000);
    const [adding, setAdding] = useState(false);
    useEvents(["stream", "configuration"], streams.reload);
    const list = streams.value?.streams;

    return (
        <>
            <div className="title">
                <h1>Streams</h1>
                <button className={adding ? "" : "primary"} aria-expanded={adding} onClick={() => setAdding(!adding)}>
                    {adding ? "Close" : "Add a stream"}
                </button>
            </div>
            {adding && (
                <AddStream
                    onDone={() => {
                        setAdding(false);
                        streams.reload();
                    }}
                />
            )}
            {streams.problem !== undefined && <Notice kind="error">{streams.problem}</Notice>}
            {list?.length === 0 && !adding && <p className="empty">There is no stream yet. Add one to see it here.</p>}
            <ul className="streams">
                {list?.map((stream) => (
                    <li key={stream.id}>
                        <StreamCard stream={stream} />
                    </li>
                ))}
            </ul>
        </>
    );
}
