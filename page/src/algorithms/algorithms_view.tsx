import { useState } from "react";
import { get } from "@/api/client";
import { useLoaded } from "@/common/loaded";
import { Notice } from "@/common/notice";
import { useEvents } from "@/common/server";
import { isObject, type Json, type JsonObject } from "@/lib/json";
import { title } from "@/lib/text";
import { tagsOf } from "./tags";

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
    const entries = tagsOf(value);
    if (entries === undefined) return <>{isObject(value) ? JSON.stringify(value) : String(value)}</>;
    return (
        <span className="tags">
            {entries.map(({ text, colour }) => (
                <span className="tag" key={text}>
                    {colour !== undefined && <span className="swatch" style={{ backgroundColor: colour }} />}
                    {text}
                </span>
            ))}
        </span>
    );
}
