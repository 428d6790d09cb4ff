#compdef quillon-cli
# zsh completion for quillon-cli; written by quillon-cli --completions zsh
_arguments -S \
  '--chain=[Run the chain file FILE (.qlch); - reads it from standard input]:file:_files -g "*.qlch"' \
  '*--filter=[Run these filter definitions (.ffxml), in the order given]:definition:_files -g "*.ffxml"' \
  '--tool=[The render tool executable; a name without a slash is looked up on PATH]:path:_command_names -e' \
  '--wine=[Run the render tool, a Windows program (.exe), under Wine\: --wine alone in the user'\''s prefix ($WINEPREFIX, else ~/.wine), --wine=PREFIX in that one]:prefix:_files -/' \
  '--wine-binary=[With --wine\: the wine launcher (default\: wine on PATH)]:path:_command_names -e' \
  '--output=[The output directory (also holds the task files and the log)]:dir:_files -/' \
  '--mkdir[Create the output directory (and its parents) when it is missing]' \
  '--input=[Render one input image]:file:_files' \
  '--input-dir=[Render every entry under DIR, files and subdirectories, at any depth, sorted by path; entries whose path inside DIR begins with "." are skipped]:dir:_files -/' \
  '--frames=[Frames per input (default 10)]:n: ' \
  '--width=[Width without input (default 600)]:w: ' \
  '--height=[Height without input (default 600)]:h: ' \
  '--prefix=[Output name prefix (default my-export)]:text: ' \
  '--frame-style=[Frame numbering\: plain (default), four-digit or letter]:style:(plain four-digit letter)' \
  '--format=[JPEG, PNG, TIFF, TGA, BMP, EXR or PFM (default JPEG)]:format:(JPEG PNG TIFF TGA BMP EXR PFM)' \
  '--preset=[Zero-based preset index for every step (default 0)]:k: ' \
  '--maps=[Render maps (one-filter chains)\: base,alpha,diffuse,bump,normal,specstr,specexp,ao,ro,metallic]:list:(base alpha diffuse bump normal specstr specexp ao ro metallic)' \
  '--log[Write the tool'\''s output to qlrn_logfile.txt in the output directory]' \
  '--seed=[Seed of the run'\''s random values]:n: ' \
  '--antialias=[Switch]:on|off:(on off)' \
  '--multithread=[Switch]:on|off:(on off)' \
  '--dither=[Switch]:on|off:(on off)' \
  '--progressive=[Switch]:on|off:(on off)' \
  '--normal-flip=[Switch]:on|off:(on off)' \
  '--jpeg-full-precision=[Switch]:on|off:(on off)' \
  '--png-transparency=[Switch]:on|off:(on off)' \
  '--tiff-transparency=[Switch]:on|off:(on off)' \
  '--tiff-float=[Switch]:on|off:(on off)' \
  '--tga-transparency=[Switch]:on|off:(on off)' \
  '--tga-flip=[Switch]:on|off:(on off)' \
  '--jpeg-quality=[JPEG quality (default 80)]:q: ' \
  '--png-bitdepth=[8|16]:value:(8 16)' \
  '--png-compression=[none|fast|best]:value:(none fast best)' \
  '--tiff-bitdepth=[8|16|24]:value:(8 16 24)' \
  '--tiff-compression=[none|lzw|deflate]:value:(none lzw deflate)' \
  '--tga-bitdepth=[24|32]:value:(24 32)' \
  '--jobs=[Render tool processes at once (default 1)\: the inputs of a step are spread over N slots; 0 uses one per core]:n: ' \
  '--quiet[Print only problems and the closing count of outputs]' \
  '--verbose[Also print the plan of the run, one line per output]' \
  '--report=[Write the run report (every output with its status and values) as JSON; - writes it to standard output]:file:_files' \
  '--dry-run[Print the plan (every output and its values) and stop\: nothing is written or run]' \
  '--json[With --dry-run\: print the plan as JSON]' \
  '--existing=[Planned outputs that exist already\: overwrite (default, counted at the end), skip their tasks, or stop before the run]:policy:(overwrite skip stop)' \
  '--save-chain=[Write the chain (with its advanced values) to FILE after the run]:file:_files -g "*.qlch"' \
  '--slurm-bundle=[Plan the run (same flags and checks) and write it to the new or empty directory DIR as a bundle for Slurm, without running anything\: the plan, the chain, the settings and submit.sh, which submits a job array with one element per input and a job that collects them]:dir:_files -/' \
  '*--slurm-option=[With --slurm-bundle\: an option submit.sh passes to both sbatch calls, after the words of $QUILLON_SBATCH_OPTIONS (repeatable)]:option: ' \
  '--run-part=[--run-part DIR K\: render element K of the bundle DIR (its input through every step) and write its report part into the bundle]:dir:_files -/' \
  '--collect=[Merge the report parts of the bundle DIR into its run report (DIR/report.json), remove what failed elements left, and exit like a run]:dir:_files -/' \
  '--from-report=[With --output-index N and --save-chain\: write the chain that makes output N of the run report FILE again (each parameter that varied held at that output'\''s value), without running anything; the chain is --chain or --filter, or else the definitions the report names]:file:_files' \
  '--output-index=[With --from-report\: the final output, counted from 1 in plan order]:n: ' \
  '--contact-sheet=[After the run, write every final output as a tile labelled with its name and varying values into one PNG image]:file:_files' \
  '--animation=[After the run, assemble each input'\''s final frames in frame order into FILE (.gif, .webm or .mp4) with ffmpeg; with several inputs one file each, named FILE-INPUT]:file:_files' \
  '--fps=[With --animation\: frames per second (default 24)]:n: ' \
  '-h[Show this help]' \
  '--help[Show this help]' \
  '-v[Show the version]' \
  '-V[Show the version]' \
  '--version[Show the version]' \
  '*:definition:_files -g "*.ffxml"'
