import { useEffect, useRef, useState } from "react";
import { useEvents } from "@/common/server";
import { readDetection } from "./detection";
import { addRows, toRow, type Row } from "./event_log";
import { Plot } from "./plot";
import { Series } from "./series";

const kinds = ["detection", "stream", "model", "configuration"];
/** How often the table changes, in milliseconds. */
const interval = 500;

/** Everything that happens: a plot of what is found over time, and a table. */
export function EventsView() {
    const [rows, setRows] = useState<Row[]>([]);
    const [streams, setStreams] = useState<string[]>([]);
    const [hidden, setHidden] = useState<string[]>([]);
    const [paused, setPaused] = useState(false);
    const [series] = useState(() => new Series(1000, 120000));
    const waiting = useRef<Row[]>([]);

    useEvents(["detection", "stream", "model", "configuration", "lost"], (event) => {
        const detection = readDetection(event);
        if (detection) series.add(detection.stream, event.at, detection.objects.length);
        const row = toRow(event);
        if (row && !hidden.includes(row.kind)) waiting.current.push(row);
    });
    useEffect(() => {
        const timer = setInterval(() => {
            const news = waiting.current.splice(0);
            if (!paused) setRows((before) => addRows(before, news));
            setStreams((before) => (before.join() === series.streams().join() ? before : series.streams()));
        }, interval);
        return () => clearInterval(timer);
    }, [paused, series]);

    return (
        <>
            <div className="title">
                <h1>Events</h1>
                <button aria-pressed={paused} onClick={() => setPaused(!paused)}>
                    {paused ? "Go on" : "Pause"}
                </button>
            </div>
            <section className="card">
                <h2>Objects in the picture</h2>
                <Plot series={series} streams={streams} />
            </section>
            <fieldset className="choices inline">
                <legend>Show</legend>
                {kinds.map((kind) => (
                    <label className="check" key={kind}>
                        <input
                            type="checkbox"
                            checked={!hidden.includes(kind)}
                            onChange={(event) => {
                                const others = hidden.filter((other) => other !== kind);
                                setHidden(event.target.checked ? others : [...others, kind]);
                                if (!event.target.checked) setRows(rows.filter((row) => row.kind !== kind));
                            }}
                        />
                        {kind}
                    </label>
                ))}
            </fieldset>
            <EventTable rows={rows} />
        </>
    );
}

function EventTable({ rows }: { rows: Row[] }) {
    if (rows.length === 0) return <p className="empty">Nothing has happened since this view was opened.</p>;
    return (
        <div className="card table" tabIndex={0} role="region" aria-label="Events, the newest first">
            <table className="events">
                <thead>
                    <tr>
                        <th>Time</th>
                        <th>Kind</th>
                        <th>Stream</th>
                        <th>What</th>
                    </tr>
                </thead>
                <tbody>
                    {rows.map((row) => (
                        <tr key={row.key}>
                            <td className="time">{new Date(row.at).toLocaleTimeString("en-GB")}</td>
                            <td>
                                <span className={`badge kind-${row.kind}`}>{row.kind}</span>
                            </td>
                            <td>{row.stream}</td>
                            <td>{row.text}</td>
                        </tr>
                    ))}
                </tbody>
            </table>
        </div>
    );
}
