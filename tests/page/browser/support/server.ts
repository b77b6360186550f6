import { execFileSync, spawn, type ChildProcess } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { join } from "node:path";

function variable(name: string): string {
    const value = process.env[name];
    if (value === undefined || value === "") throw new Error(`${name} is not set: CTest does`);
    return value;
}

/** The file of the demo video, which the first who asks fetches. */
export const video = execFileSync(variable("QEL_TEST_DEMO_VIDEO"), { encoding: "utf8" }).trim();

/** A stream that finds what moves in the demo video, over and over. */
export const gate = { source: video, loop: true, algorithms: ["motion"] };

/** A server of its own, on a free port, with its files in a folder of its own. */
export class Server {
    private constructor(
        private readonly process: ChildProcess,
        readonly address: string,
        readonly folder: string,
    ) {}

    /** configuration: the text of the file, or what it holds. */
    static async start(configuration: unknown, args: (folder: string) => string[] = () => []): Promise<Server> {
        const folder = await mkdtemp(join(tmpdir(), "qel-page-"));
        const file = join(folder, "config.json");
        await writeFile(file, typeof configuration === "string" ? configuration : JSON.stringify(configuration));
        const all = ["serve", file, "--listen", "127.0.0.1:0", "--assets", "dist", ...args(folder)];
        const process = spawn(variable("QEL_TEST_PROGRAM"), all, { stdio: ["ignore", "ignore", "pipe"] });
        return new Server(process, await listening(process), folder);
    }

    async stop(): Promise<void> {
        const ended = once(this.process, "exit");
        if (this.process.exitCode === null && this.process.signalCode === null) {
            this.process.kill("SIGTERM");
            await ended;
        }
        await rm(this.folder, { recursive: true, force: true });
    }

    async get<T>(path: string): Promise<T> {
        const answer = await fetch(`${this.address}/api/${path}`);
        if (!answer.ok) throw new Error(`${path}: ${answer.status} ${await answer.text()}`);
        return (await answer.json()) as T;
    }
}

/** The address that the server says it listens on. */
function listening(process: ChildProcess): Promise<string> {
    return new Promise((resolve, reject) => {
        let said = "";
        process.stderr?.setEncoding("utf8").on("data", (text: string) => {
            said += text;
            const found = /^qel: listening on (http:\S+)$/m.exec(said);
            if (found?.[1] !== undefined) resolve(found[1]);
        });
        process.on("exit", (code) => reject(new Error(`the server ended with code ${code} and said:\n${said}`)));
    });
}
