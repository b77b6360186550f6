import type { RJSFSchema } from "@rjsf/utils";
import type { Held } from "@/lib/draft";
import { at, isObject, type Json, type JsonObject } from "@/lib/json";
import { get } from "./client";
import type { AlgorithmInfo } from "./types";

/** A part of the configuration with all that a form for it needs. */
export interface Part {
    schema: RJSFSchema;
    held: Held;
}

function toAddress(path: string): string {
    return path.split(".").map(encodeURIComponent).join("/");
}

function object(value: Json | undefined): JsonObject {
    return isObject(value) ? value : {};
}

/** The defaults that a schema states. */
export function defaultsOf(schema: RJSFSchema): JsonObject {
    const found: JsonObject = {};
    for (const [name, child] of Object.entries((schema.properties ?? {}) as Record<string, RJSFSchema | boolean>)) {
        if (typeof child === "boolean") continue;
        if (child.properties) found[name] = defaultsOf(child);
        else if (child.default !== undefined) found[name] = child.default as Json;
    }
    return found;
}

/** The schema without some of its members. */
export function without(schema: RJSFSchema, names: string[]): RJSFSchema {
    const properties = Object.entries(schema.properties ?? {}).filter(([name]) => !names.includes(name));
    return { ...schema, properties: Object.fromEntries(properties) };
}

/** The schema of a stream with the names of algorithms to choose from; others that the server understands may be typed. */
function suggesting(schema: RJSFSchema, names: string[]): RJSFSchema {
    const list: unknown = schema.properties?.["algorithms"];
    if (!isObject(list) || !isObject(list["items"])) return schema;
    const items = { ...list["items"], examples: names };
    return { ...schema, properties: { ...schema.properties, algorithms: { ...list, items } } };
}

/** The settings that all streams have in common; those that are not set have their defaults. */
export async function loadCommonSettings(): Promise<Part> {
    const [schema, effective, document] = await Promise.all([
        get<RJSFSchema>("schema/algorithms"),
        get<JsonObject>("config/algorithms"),
        get<JsonObject>("document"),
    ]);
    const settings = without(schema, ["info"]);
    return {
        schema: settings,
        held: { effective, own: object(document["algorithms"]), common: defaultsOf(settings) },
    };
}

/** What a stream is to do; its settings follow the common ones where it has none of its own. */
export async function loadStreamSettings(id: string): Promise<Part> {
    const path = `streams.${id}`;
    const [schema, { algorithms }, effective, common, document] = await Promise.all([
        get<RJSFSchema>(`schema/${toAddress(path)}`),
        get<{ algorithms: AlgorithmInfo[] }>("algorithms"),
        get<JsonObject>(`config/${toAddress(path)}`),
        get<JsonObject>("config/algorithms"),
        get<JsonObject>("document"),
    ]);
    return {
        schema: suggesting(schema, algorithms.map((algorithm: AlgorithmInfo) => algorithm.name)),
        held: { effective, own: object(at(document, path)), common: { settings: common } },
    };
}
