import { at, equal, leaves, withValue, type Json, type JsonObject } from "./json";

/** What a person has changed and not yet applied: a new value for each dotted path; null takes a setting back. */
export type Draft = ReadonlyMap<string, Json>;
export const emptyDraft: Draft = new Map();

/** What the server holds of a part of the configuration. */
export interface Held {
    /** The values in effect. */
    effective: JsonObject;
    /** What has been set there; the others follow. */
    own: JsonObject;
    /** What holds where nothing is set: the common value or the default. */
    common: JsonObject;
}

/** A change as a person wants to read it. */
export interface Change {
    path: string;
    before: Json | undefined;
    after: Json | undefined;
    /** The setting is taken back and follows the common value again. */
    follows: boolean;
}

/** The values that a form shows. */
export function shown(held: Held, draft: Draft): JsonObject {
    let values = held.effective;
    for (const [path, value] of draft) {
        const now = value === null ? at(held.common, path) : value;
        if (now !== undefined) values = withValue(values, path, now);
    }
    return values;
}

/** The draft after a form that showed `before` holds `after`. What is as it was before all changes is no change. */
export function edited(held: Held, draft: Draft, before: JsonObject, after: JsonObject): Draft {
    const next = new Map(draft);
    const take = (path: string, value: Json) => {
        if (equal(value, at(held.effective, path))) next.delete(path);
        else next.set(path, value);
    };
    for (const [path, value] of leaves(after)) if (!equal(value, at(before, path))) take(path, value);
    // A field that was emptied holds no value at all: it is an empty text, which a number refuses to be.
    for (const [path] of leaves(before)) if (at(after, path) === undefined) take(path, "");
    return next;
}

/** The draft with a setting taken back, so that it follows the common value. */
export function followed(held: Held, draft: Draft, path: string): Draft {
    const next = new Map(draft);
    if (at(held.own, path) === undefined) next.delete(path);
    else next.set(path, null);
    return next;
}

export function changes(held: Held, draft: Draft): Change[] {
    return [...draft].map(([path, value]) => ({
        path,
        before: at(held.effective, path),
        after: value === null ? at(held.common, path) : value,
        follows: value === null,
    }));
}

/** The merge patch (RFC 7396) of the whole document; root: the dotted path of the form's part. */
export function toPatch(draft: Draft, root: string): JsonObject {
    let patch: JsonObject = {};
    for (const [path, value] of draft) patch = withValue(patch, root === "" ? path : `${root}.${path}`, value);
    return patch;
}

/** Whether a setting has a value of its own, once the draft is applied. */
export function isOwn(held: Held, draft: Draft, path: string): boolean {
    return draft.has(path) ? draft.get(path) !== null : at(held.own, path) !== undefined;
}
