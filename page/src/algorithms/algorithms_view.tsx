import { useState } from "react";
import { get } from "@/api/client";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { useEvents } from "@/common/server";
import { isObject, type Json, type JsonObject } from "@/lib/json";
import { title } from "@/lib/text";

/** What the algorithms publish of themselves, with the states of their models as they change. */
export function AlgorithmsView() {
    const info = useLoaded("descriptors", () => get<JsonObject>("config/algorithms/info"));
    const [news, setNews] = useState("");
    useEvents(["model"], (event) => {
        const { path, value } = event.data;
        if (typeof path === "string") setNews(`${path.replace(".", " ").replaceAll("_", " ")}: ${String(value)}`);
        info.reload();
    });
    const descriptors = Object.entries(info.value ?? {}).filter((entry): entry is [string, JsonObject] => isObject(entry[1]));
    return (
        <>
            <div className="title">
                <h1>Algorithms</h1>
            </div>
            <p className="lead">What each algorithm says of itself: its version, its model, what it tells apart.</p>
            <p className="reader" role="status">
                {news}
            </p>
            {info.problem !== undefined && <Notice kind="error">{info.problem}</Notice>}
            {info.value && descriptors.length === 0 && <p className="empty">No algorithm has published anything.</p>}
            <ul className="descriptors">
                {descriptors.map(([name, values]) => (
                    <li key={name}>
                        <Descriptor name={name} values={values} />
                    </li>
                ))}
            </ul>
        </>
    );
}

function Descriptor({ name, values }: { name: string; values: JsonObject }) {
    const { model_status: status, ...others } = values;
    return (
        <article className="card" aria-label={title(name)}>
            <h2>
                {title(name)}
                {typeof status === "string" && <span className={`badge model-${status}`}>{status.replaceAll("_", " ")}</span>}
            </h2>
            <dl className="facts">
                {Object.entries(others).map(([key, value]) => (
                    <div key={key}>
                        <dt>{title(key)}</dt>
                        <dd>
                            <Value value={value} />
                        </dd>
                    </div>
                ))}
            </dl>
        </article>
    );
}

function Value({ value }: { value: Json }) {
    if (!Array.isArray(value)) return <>{isObject(value) ? JSON.stringify(value) : String(value)}</>;
    return (
        <span className="tags">
            {value.map((entry, index) => (
                <Tag key={index} entry={entry} />
            ))}
        </span>
    );
}

/** An entry of a list; one with a colour shows it. */
function Tag({ entry }: { entry: Json }) {
    if (!isObject(entry)) return <span className="tag">{String(entry)}</span>;
    const colour = Object.values(entry).find((value) => typeof value === "string" && /^#[0-9a-f]{6}$/i.test(value));
    const text = Object.values(entry).filter((value) => value !== colour && typeof value !== "object");
    return (
        <span className="tag">
            {typeof colour === "string" && <span className="swatch" style={{ backgroundColor: colour }} />}
            {text.map(String).join(" ")}
        </span>
    );
}
