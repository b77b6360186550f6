import type { Json } from "@/lib/json";
import type { Problem } from "./types";

/** An answer that is no success, or no answer at all (status 0). */
export class ApiError extends Error {
    constructor(
        readonly status: number,
        readonly problem: Problem,
    ) {
        super(problem.detail || problem.title || `The server answered ${status}`);
    }
}

/** Told when the server wants a token. */
type Unauthorised = () => void;
let unauthorised: Unauthorised = () => undefined;
export function onUnauthorised(handler: Unauthorised): void {
    unauthorised = handler;
}

/** The address of a path of the API, relative to the page: it may be served below any path. */
export function address(path: string): string {
    return new URL(`api/${path}`, document.baseURI).href;
}

async function readProblem(answer: Response): Promise<Problem> {
    try {
        return (await answer.json()) as Problem;
    } catch {
        return { title: answer.statusText, status: answer.status };
    }
}

interface Sent {
    body?: Json;
    type?: string;
    signal?: AbortSignal;
}

async function request(method: string, path: string, { body, type = "application/json", signal }: Sent = {}): Promise<Response> {
    const options: RequestInit = { method, credentials: "same-origin", cache: "no-store", signal: signal ?? null };
    if (body !== undefined) Object.assign(options, { body: JSON.stringify(body), headers: { "Content-Type": type } });
    const answer = await fetch(address(path), options).catch(() => {
        throw new ApiError(0, { detail: "The server does not answer" });
    });
    if (answer.ok) return answer;
    if (answer.status === 401 && path !== "session") unauthorised();
    throw new ApiError(answer.status, await readProblem(answer));
}

export async function get<T>(path: string): Promise<T> {
    return (await (await request("GET", path)).json()) as T;
}

export async function fetchBlob(path: string, signal: AbortSignal): Promise<Blob> {
    return (await request("GET", path, { signal })).blob();
}

export async function post<T>(path: string, body: Json): Promise<T> {
    const answer = await request("POST", path, { body });
    return (answer.headers.get("Content-Type")?.includes("json") ? await answer.json() : undefined) as T;
}

export async function remove(path: string): Promise<void> {
    await request("DELETE", path);
}

/** Applies a merge patch to the configuration. */
export async function patchConfiguration(patch: Json): Promise<{ changed: string[] }> {
    const answer = await request("PATCH", "config", { body: patch, type: "application/merge-patch+json" });
    return (await answer.json()) as { changed: string[] };
}
